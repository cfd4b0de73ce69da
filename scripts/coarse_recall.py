#!/usr/bin/python3
"""Bracketed compounds recovered whole by the coarse-grained mode.

Usage: scripts/coarse_recall.py ZIVOR DATA_BASE CORPUS DAYS [RAW_OUT]

Writes the raw text of the paragraphs of DAYS (e.g. 25-27) of the annotated
CORPUS (the gold words joined, one paragraph a line, GBK) to RAW_OUT (a
temporary file when not given), analyses it with `ZIVOR -d DATA_BASE -e gbk
--format tsv`, with and without --coarse, and prints:
  recall     bracketed compounds ([...]nt and the like) whose span is one
             word of the output, with --coarse and without;
  merged     words of the --coarse output that the fine output does not
             have (the units the granularity pass made);
  precision  the merged words that are a bracketed compound;
  aligned    the merged words that start and end at gold word boundaries
             and cut no bracketed compound (they join whole gold words).
"""
import re
import subprocess
import sys
import tempfile

TOKEN = re.compile(r"^(\[(?!/))?(.+)/[A-Za-z]+(?:\]([A-Za-z]+))?$")


def paragraphs(corpus, first, last):
    """(raw GBK bytes, gold word boundaries, bracket spans) per paragraph."""
    with open(corpus, "rb") as f:
        for line in f:
            line = line.decode("gbk").strip()
            if not line or not first <= int(line[6:8]) <= last:
                continue
            raw, bounds, brackets, opened = b"", {0}, [], None
            for token in line.split()[1:]:  # the first token is the id
                m = TOKEN.match(token)
                if m.group(1):
                    opened = len(raw)
                raw += m.group(2).encode("gbk")
                bounds.add(len(raw))
                if m.group(3) and opened is not None:
                    brackets.append((opened, len(raw)))
                    opened = None
            yield raw, bounds, brackets


def spans(zivor, base, raw_path, coarse):
    """The output words of each line as (byte start, byte end) sets."""
    command = [zivor, "-d", base, "-e", "gbk", "--jobs", "1", "--format", "tsv", raw_path]
    if coarse:
        command.insert(1, "--coarse")
    lines, current = [], set()
    for row in subprocess.run(command, check=True, capture_output=True).stdout.split(b"\n"):
        if not row:
            lines.append(current)
            current = set()
            continue
        fields = row.split(b"\t")
        current.add((int(fields[4]), int(fields[5])))
    return lines


def main():
    if len(sys.argv) not in (5, 6):
        sys.exit(__doc__)
    zivor, base, corpus, days = sys.argv[1:5]
    first, _, last = days.partition("-")
    gold = list(paragraphs(corpus, int(first), int(last or first)))
    raw_path = sys.argv[5] if len(sys.argv) == 6 else tempfile.mkstemp(suffix=".txt")[1]
    with open(raw_path, "wb") as out:
        out.write(b"".join(raw + b"\n" for raw, _, _ in gold))
    fine = spans(zivor, base, raw_path, False)
    coarse = spans(zivor, base, raw_path, True)
    total = sum(len(b) for _, _, b in gold)
    found = {"fine": 0, "coarse": 0}
    merged = exact = aligned = 0
    for (raw, bounds, brackets), f, c in zip(gold, fine, coarse):
        found["fine"] += sum(1 for b in brackets if b in f)
        found["coarse"] += sum(1 for b in brackets if b in c)
        for s, e in c - f:
            merged += 1
            exact += (s, e) in brackets
            cuts = any(bs < s < be or bs < e < be for bs, be in brackets if (bs, be) != (s, e))
            aligned += s in bounds and e in bounds and not cuts
    print("paragraphs %d, bracketed compounds %d" % (len(gold), total))
    for mode in ("fine", "coarse"):
        print("recall %-6s %d / %d = %.4f" % (mode, found[mode], total, found[mode] / total))
    print("merged %d, precision %d / %d = %.4f, aligned %d / %d = %.4f"
          % (merged, exact, merged, exact / max(merged, 1), aligned, merged,
             aligned / max(merged, 1)))


if __name__ == "__main__":
    main()
