"""Finding the library and its data, initialising once, failing with the
reason. Each case runs in a fresh interpreter: the library is initialised
once per process."""

import os
import shutil

from conftest import HERE, run_python

import zivor

ANALYSE = """
    import zivor
    for attempt in range(2):
        try:
            zivor.lcut("今天")
            print(zivor.status()[1])
        except zivor.ZivorError as error:
            print(error)
"""


def copy_data(target):
    zivor.initialize()
    os.makedirs(os.path.join(target, "Data"))
    source = os.path.join(zivor.status()[1], "Data")
    for name in os.listdir(source):
        if os.path.isfile(os.path.join(source, name)) and not name.endswith((".log", ".lst")):
            shutil.copy(os.path.join(source, name), os.path.join(target, "Data", name))


def test_missing_or_damaged_data(tmp_path):
    result = run_python(ANALYSE, cwd=str(tmp_path), ZIVOR_DATA_DIR=str(tmp_path / "nowhere"))
    assert result.stdout.count("no Data/Configure.xml under the data directory") == 2
    assert os.listdir(str(tmp_path)) == []  # checked before the library could log
    copy_data(str(tmp_path / "data"))
    core = tmp_path / "data" / "Data" / "CoreDict.pdat"
    core.write_bytes(core.read_bytes()[:1000])
    result = run_python(ANALYSE, cwd=str(tmp_path), ZIVOR_DATA_DIR=str(tmp_path / "data"))
    lines = result.stdout.splitlines()
    assert len(lines) == 2 and all("Cannot open file" in line and str(core) in line
                                   for line in lines), result.stdout + result.stderr


def test_installed_layout(tmp_path):
    """An installed library finds the data installed beside it:
    PREFIX/lib/libZIVOR.so.0 and PREFIX/share/zivor/Data."""
    (tmp_path / "lib").mkdir()
    library = tmp_path / "lib" / "libZIVOR.so.0"
    os.symlink(os.path.realpath(zivor._native.find_library()), str(library))
    copy_data(str(tmp_path / "share" / "zivor"))
    result = run_python(ANALYSE, cwd=str(tmp_path), ZIVOR_LIBRARY=str(library),
                        ZIVOR_DATA_DIR=None)
    assert result.stdout.split() == [str(tmp_path / "share" / "zivor")] * 2, result.stderr


def test_first_use_from_many_threads():
    result = run_python("""
        import threading, zivor
        text = "中国人民银行今年将发放贷款3000亿元，比去年增长15%。"
        barrier = threading.Barrier(8)
        results = []
        def work():
            barrier.wait()
            results.append(zivor.lcut(text))
        threads = [threading.Thread(target=work) for _ in range(8)]
        for t in threads: t.start()
        for t in threads: t.join()
        print(len(results), all(r == results[0] for r in results), zivor.status()[3])
    """)
    assert result.stdout.split() == ["8", "True", "1"], result.stderr


def test_tag_sets():
    zivor.initialize()
    with open(os.path.join(zivor.status()[1], "Data", "PKU.map"), encoding="ascii") as f:
        pku = set(f.read().split()) | {"url", "email", "session"}  # merges keep their names
    code = """
        import zivor
        zivor.initialize(tag_set=%d)
        zivor.initialize(tag_set=%d)  # the same again: nothing changes
        try:
            zivor.initialize(tag_set=1)
        except zivor.ZivorError:
            print("refused")
        text = open(%r, encoding="utf-8").read()
        print(" ".join({tag for _, tag in zivor.tag(text) if tag}))
    """
    sentences = os.path.join(HERE, "data", "sentences.txt")
    default, chosen = (run_python(code % (n, n, sentences)).stdout.split() for n in (0, 2))
    assert default[0] == chosen[0] == "refused"
    assert set(chosen[1:]) <= pku and not set(default[1:]) <= pku


def test_coarse_mode():
    code = """
        import zivor
        zivor.initialize(coarse=%r)
        print(" ".join(zivor.lcut("中国科学院的专家")))
        try:
            zivor.initialize(coarse=%r)
        except zivor.ZivorError as error:
            print(error)
    """
    fine, coarse = (run_python(code % (c, not c)).stdout.splitlines() for c in (False, True))
    assert fine[0] == "中国 科学院 的 专家" and coarse[0] == "中国科学院 的 专家"
    assert fine[1].endswith("tag set 0") and coarse[1].endswith("tag set 0, coarse")
