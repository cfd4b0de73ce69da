"""The development split as raw text, and its tokens beside the zivor
command's.

    /usr/bin/python3 python/bench/devsplit.py CORPUS RAW.txt [ZIVOR_COMMAND]

writes the raw text of days 25-27 of the annotated corpus (each paragraph's
words joined, without the paragraph id and the tags; one paragraph a line,
UTF-8) to RAW.txt and, given the zivor command, compares its words
(`zivor -d DATA --no-tags RAW.txt`) with zivor.lcut's, line by line.
"""

import os
import subprocess
import sys

DEV_DAYS = ("19980125", "19980126", "19980127")


def dev_lines(corpus):
    """The raw paragraphs of days 25-27 of the corpus (GBK, one tagged
    paragraph a line)."""
    lines = []
    with open(corpus, encoding="gbk") as f:
        for line in f:
            tokens = line.split()
            if not tokens or tokens[0][:8] not in DEV_DAYS:
                continue
            words = []
            for token in tokens[1:]:  # the first is the paragraph id
                word = token.rsplit("/", 1)[0]  # "[中央/n" or "电台/n]nt": the word
                words.append(word[1:] if word.startswith("[") and len(word) > 1 else word)
            lines.append("".join(words))
    return lines


def compare(raw_path, command, data_dir):
    """(lines, tokens, lines that differ) of zivor.lcut against the command."""
    import zivor
    output = subprocess.run([command, "-d", data_dir, "--no-tags", raw_path],
                            stdout=subprocess.PIPE, check=True).stdout.decode("utf-8")
    theirs = output.splitlines()
    with open(raw_path, encoding="utf-8") as f:
        ours = [[w for w in zivor.lcut(line.rstrip("\n")) if not w.isspace()] for line in f]
    differing = [i for i, (a, b) in enumerate(zip(ours, theirs)) if a != b.split()]
    differing += list(range(min(len(ours), len(theirs)), max(len(ours), len(theirs))))
    return len(ours), sum(map(len, ours)), differing


def main():
    corpus, raw = sys.argv[1], sys.argv[2]
    lines = dev_lines(corpus)
    with open(raw, "w", encoding="utf-8") as f:
        f.write("".join(line + "\n" for line in lines))
    print("%d paragraphs, %d characters, %d bytes UTF-8" %
          (len(lines), sum(map(len, lines)), os.path.getsize(raw)))
    if len(sys.argv) > 3:
        import zivor
        count, tokens, differing = compare(raw, sys.argv[3], zivor.status()[1] or
                                           (zivor.initialize() and zivor.status()[1]))
        print("zivor.lcut: %d lines, %d tokens; lines differing from %s: %d" %
              (count, tokens, sys.argv[3], len(differing)))
        return 1 if differing else 0
    return 0


if __name__ == "__main__":
    sys.exit(main())
