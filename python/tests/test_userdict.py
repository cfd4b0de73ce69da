"""The user dictionary. It belongs to the process, so each test adds words
of its own and deletes them afterwards."""

import io

import pytest

import zivor


@pytest.fixture
def added():
    words = []
    yield words
    for word in words:
        zivor.del_word(word)


def test_add_and_delete(added):
    text = "今天北京下雪了"
    before = zivor.tag(text)
    added.append("北京下雪")
    assert zivor.add_word("北京下雪", "nz") is True
    assert ("北京下雪", "nz") in zivor.tag(text)
    assert zivor.add_word("北京下雪", "t" * 39) is False  # present: the tag is replaced
    assert ("北京下雪", "t" * 39) in zivor.tag(text)
    assert zivor.del_word("北京下雪") is True
    assert zivor.del_word("北京下雪") is False
    assert zivor.tag(text) == before


def test_a_deleted_word_stays_deleted(added):
    # The dictionary keeps a deleted word's count: adding it again reports it
    # present and does not bring it back.
    added.append("天津塘沽")
    zivor.add_word("天津塘沽", "ns")
    zivor.del_word("天津塘沽")
    assert zivor.add_word("天津塘沽", "ns") is False
    assert ("天津塘沽", "ns") not in zivor.tag("天津塘沽区")


@pytest.mark.parametrize("word, tag", [("", None), ("北京 下雪", None), ("北京\0", None),
                                       ("北京", "n z"), ("北京", ""), ("北京", "x" * 40)])
def test_entries_refused(word, tag):
    with pytest.raises(ValueError):
        zivor.add_word(word, tag)


def test_load_a_utf8_file(tmp_path, added):
    # jieba's line forms; the middle dot is one of the characters whose GBK
    # code differs between tables, which a UTF-8 dictionary never meets.
    path = tmp_path / "user.txt"
    path.write_text("\ufeff今天北京 3 nz\n\n埃德加·斯诺 nr\n来到延安 7\n", encoding="utf-8")
    added.extend(["今天北京", "埃德加·斯诺", "来到延安", "云计算"])
    text = "今天北京下雪了。作家埃德加·斯诺说，他们来到延安。"
    assert zivor.load_userdict(str(path)) == 3
    pairs = zivor.tag(text)
    assert {("今天北京", "nz"), ("埃德加·斯诺", "nr"), ("来到延安", "n")} <= set(pairs)
    assert zivor.load_userdict(io.StringIO("今天北京 ns\n")) == 0  # present already
    assert ("今天北京", "ns") in zivor.tag(text)
    with pytest.raises(ValueError, match="line 2"):
        zivor.load_userdict(io.StringIO("云计算 n\n云 计算 5 n\n"))
