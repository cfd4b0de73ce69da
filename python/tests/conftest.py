"""Shared helpers of the Python package's tests.

The package is imported from PYTHONPATH (the source tree, as CTest runs the
tests, with ZIVOR_LIBRARY naming the built library) or from an installation.
"""

import os
import random
import subprocess
import sys
import textwrap

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
PROJECT = os.path.dirname(os.path.dirname(HERE))
CORPUS = os.environ.get("ZIVOR_CORPUS",
                        os.path.join(PROJECT, os.pardir, "shared", "corpus",
                                     "pfr-199801-days01-27.txt"))


def read_lines(name):
    """The lines of tests/data/NAME: sentences.txt, single sentences;
    articles.txt, short articles whose phrases recur (they have keywords
    and, together, new words)."""
    with open(os.path.join(HERE, "data", name), encoding="utf-8") as f:
        return [line.rstrip("\n") for line in f if line.strip()]


def history_dependent(sentence):
    """Whether the tags of a sentence depend on the texts analysed before it.

    Once an analysis instance has tagged a symbol without lexicon entries
    ("@", an emoji), its tagger gives every word without entries tag 78 for
    good (Src/Tagger/HMMTagger.h). Sentences with such words ("+", rare or
    traditional characters, which UTF-8 text leaves unconverted) are tagged
    differently before and after, so their tags depend on which pooled
    instance analyses them. Documents compared across threads or processes
    leave these sentences out."""
    return any(mark in sentence for mark in ("@", "😀", "+", "臺灣", "𠀀"))


def make_documents(count, seed=7):
    """`count` documents of two to twelve sentences or articles each, some
    on several lines."""
    units = [s for s in read_lines("sentences.txt") if not history_dependent(s)]
    units += read_lines("articles.txt")
    rng = random.Random(seed)
    documents = []
    for _ in range(count):
        parts = rng.choices(units, k=rng.randint(2, 12))
        separators = rng.choices(["", "", "", "\n", " "], k=len(parts) - 1) + [""]
        documents.append("".join(p + s for p, s in zip(parts, separators)))
    return documents


@pytest.fixture(scope="session")
def sentences():
    return read_lines("sentences.txt")


@pytest.fixture(scope="session")
def articles():
    return read_lines("articles.txt")


@pytest.fixture(scope="session")
def documents():
    return make_documents(300)


def run_python(code, cwd=None, **env_changes):
    """Runs `code` in a fresh interpreter (ZIVOR initialises once per process)
    with the environment changed as given (None removes a variable);
    returns the completed process."""
    env = dict(os.environ)
    for name, value in env_changes.items():
        if value is None:
            env.pop(name, None)
        else:
            env[name] = value
    return subprocess.run([sys.executable, "-c", textwrap.dedent(code)], cwd=cwd, env=env,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=300,
                          universal_newlines=True)
