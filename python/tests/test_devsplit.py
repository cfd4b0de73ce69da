"""The development split of the annotated corpus: zivor.lcut gives the
words of the zivor command, line by line."""

import os
import runpy
import types

import pytest

from conftest import CORPUS, PROJECT

import zivor

COMMAND = os.environ.get("ZIVOR_CLI")


def devsplit():
    path = os.path.join(PROJECT, "python", "bench", "devsplit.py")
    return types.SimpleNamespace(**runpy.run_path(path))


@pytest.mark.skipif(not os.path.isfile(CORPUS), reason="no annotated corpus")
@pytest.mark.skipif(not COMMAND, reason="ZIVOR_CLI names no zivor command")
def test_dev_split_words_equal_the_commands(tmp_path):
    module = devsplit()
    lines = module.dev_lines(CORPUS)
    assert len(lines) == 2640
    raw = tmp_path / "dev-raw.txt"
    raw.write_text("".join(line + "\n" for line in lines), encoding="utf-8")
    zivor.initialize()
    count, tokens, differing = module.compare(str(raw), COMMAND, zivor.status()[1])
    assert count == len(lines) and tokens > 100000
    assert differing == []
