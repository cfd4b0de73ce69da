"""Words, tags and offsets: what cut, lcut, tag and tokenize return."""

import random
import threading

import pytest

import zivor
from zivor import _native


def check_tiling(text):
    tokens = list(zivor.tokenize(text))
    position = 0
    for word, _, start, end in tokens:
        assert (start, text[start:end]) == (position, word), (text, tokens)
        position = end
    assert position == len(text)
    assert zivor.lcut(text) == list(zivor.cut(text)) == [t[0] for t in tokens]
    assert zivor.tag(text) == [t[:2] for t in tokens]


def test_words_and_tags_are_the_librarys(sentences):
    """Sliced from the records by byte offsets, they are what the library
    writes in its own text form."""
    lib = _native.ready()
    for sentence in sentences:
        for tagged, ours in ((0, zivor.lcut(sentence)),
                             (1, [w + "/" + t for w, t in zivor.tag(sentence)])):
            theirs = lib.ParagraphProcess(sentence.encode("utf-8"), tagged).decode("utf-8")
            assert [w for w in ours if not w[0].isspace()] == theirs.split()


def test_tokens_tile_the_text(sentences):
    # characters of one to four UTF-8 bytes, unknown ones, blanks the library
    # skips (a byte-order mark, a long line's leading blanks), NULs
    texts = ["", "\r\n\n", "aé中😀𠀀한z", "\ufeff今天\ufeff北京", "   " + "".join(sentences[:5]),
             "第一行\r第二行\r\n第三行\n", "a\0b\0\0中文\0", "行\u2028分隔\x0c换页\x85"]
    rng = random.Random(11)
    alphabet = sentences + [" ", "\t", "\n", "\r\n", "\r", "\ufeff", "\0", "😀", "𠀀", "é",
                            "abc", "\u3000"]
    texts += ["".join(rng.choices(alphabet, k=rng.randint(1, 25))) for _ in range(300)]
    for text in texts:
        check_tiling(text)
    with pytest.raises(UnicodeEncodeError):
        zivor.lcut("孤\udc80立")


class TestLongLines:
    """A long line is analysed in pieces with the result of the whole."""

    @pytest.fixture
    def pieces(self, monkeypatch):
        given = []
        records = zivor._records
        monkeypatch.setattr(zivor, "_records", lambda piece: given.append(piece) or records(piece))
        return given

    def test_pieces_give_the_whole(self, sentences, monkeypatch, pieces):
        line = "".join(random.Random(3).choices(sentences, k=200))
        whole = list(zivor.tokenize(line))
        monkeypatch.setattr(zivor, "_PIECE_BYTES", 500)
        del pieces[:]
        assert list(zivor.tokenize(line)) == whole
        assert len(pieces) > 10 and max(map(len, pieces)) <= 500
        assert b"".join(pieces) == line.encode("utf-8")

    def test_line_without_a_cut(self, monkeypatch, pieces):
        line = "x" * 3000 + "今天北京下雪了"  # one atom: nowhere to cut
        whole = zivor.lcut(line)
        monkeypatch.setattr(zivor, "_PIECE_BYTES", 500)
        assert zivor.lcut(line) == whole
        assert pieces[-1] == line.encode("utf-8")


def test_threads_get_their_own_results(documents):
    expected = [zivor.tag(d) for d in documents]
    results = [None] * 4
    barrier = threading.Barrier(4)

    def work(index):
        barrier.wait()
        order = list(range(len(documents)))
        random.Random(index).shuffle(order)
        results[index] = {i: zivor.tag(documents[i]) for i in order}

    threads = [threading.Thread(target=work, args=(i,)) for i in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for result in results:
        assert [result[i] for i in range(len(documents))] == expected


def test_nested_analysis_on_the_same_thread(monkeypatch):
    """An analysis run on the same thread between the call and the copy of
    its records (as a signal handler could) does not leak its records into
    the outer result."""
    lib = _native.ready()
    real = lib.ParagraphProcessA
    nested = []

    def interrupted(text, count, user_dict):
        address = real(text, count, user_dict)
        if not nested:
            nested.append(None)
            nested.append(zivor.lcut("中国人民银行今年将发放贷款三千亿元"))
        return address

    expected = zivor.lcut("今天北京下雪了")
    monkeypatch.setattr(lib, "ParagraphProcessA", interrupted)
    assert zivor.lcut("今天北京下雪了") == expected
    assert "贷款" in nested[1]
