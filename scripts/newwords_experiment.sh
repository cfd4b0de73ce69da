#!/usr/bin/env bash
# New words in practice: trains a test-only data directory on days 1-24 of
# the annotated corpus with frequent words kept out of the dictionary, runs
# the new-word collection over the raw text of days 25-27 with it (one
# ZIVOR_NWI_AddMem per paragraph) and prints how many of the removed words
# come back among the top 50 new words, the top 50 marked ('*' a removed
# word, '+' a longer new word holding one) with what each is in the gold
# text, and how many removed words come back anywhere in the list, split by
# whether one of their characters is frequent enough to be a stop word.
#
#   scripts/newwords_experiment.sh [BUILD_DIR] [OUT_DIR] [COUNT] [SKIP]
#
# BUILD_DIR holds zivor-data and zivor-eval (default: build), OUT_DIR
# receives everything (default: /tmp/zivor-newwords), COUNT is the number of
# words removed (default: 300), SKIP the number of most frequent words passed
# over before them (default: 0).
#
# The removed words: the COUNT most frequent words (after the SKIP most
# frequent) of days 1-24 among the
# tokens tagged n, v, vn, a, ns, nt, nz or j (the corpus tags as written;
# a word's tokens with any of these tags count together), made of 2 to 4
# Chinese characters (GBK rows 0xB0-0xF7, so no digits, letters or
# symbols), ties in byte order. The model builder counts each of their
# tokens as its pieces (the longest other words of the corpus, else single
# characters), each with the token's tag.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$root/build}" && pwd)
out=${2:-/tmp/zivor-newwords}
count=${3:-300}
skip=${4:-0}
corpus=${ZIVOR_CORPUS:-$root/../shared/corpus/pfr-199801-days01-27.txt}

mkdir -p "$out/Data"
python3 - "$corpus" "$count" "$skip" > "$out/dropped.txt" <<'EOF'
import collections, sys
corpus, count, skip = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])
tags = {"n", "v", "vn", "a", "ns", "nt", "nz", "j"}
freq = collections.Counter()
with open(corpus, "rb") as f:
    for line in f:
        fields = line.split()
        if not fields or not 1 <= int(fields[0][6:8]) <= 24:
            continue
        for token in fields[1:]:
            token = token.lstrip(b"[")
            slash = token.rfind(b"/")
            if slash <= 0:
                continue
            word, tag = token[:slash], token[slash + 1:].split(b"]")[0]
            chars = len(word) // 2
            if tag.decode() not in tags or len(word) % 2 or not 2 <= chars <= 4:
                continue
            if all(0xB0 <= word[2 * i] <= 0xF7 and word[2 * i + 1] >= 0xA1
                   for i in range(chars)):
                freq[word] += 1
ranked = sorted(freq.items(), key=lambda item: (-item[1], item[0]))[skip:skip + count]
sys.stdout.buffer.write(b"".join(w + b" " + str(n).encode() + b"\n" for w, n in ranked))
EOF

cp "$root"/Data/charset.type "$root"/Data/*.map "$root"/Data/Configure.xml "$out/Data/"
"$build/zivor-data" model --corpus "$corpus" --out "$out/Data" --exclude-days 25-27 \
    --drop-words "$out/dropped.txt"
# Every removed word must be unknown to the built dictionary (handle -1).
cut -d' ' -f1 "$out/dropped.txt" | xargs "$build/zivor-data" lookup "$out/Data/CoreDict.pdat" |
    awk -F'\t' '$2 != -1 { known++ }
                END { printf "removed words still in the dictionary: %d\n", known }'
"$build/zivor-eval" -d "$out" --days 25-27 --new-words "$out/dropped.txt" --top 50 "$corpus" \
    > "$out/newwords.txt"
# The listing in UTF-8, each listed new word marked by what it is in the
# gold text of days 25-27: "word" (a corpus token), "group" (a bracketed
# compound name as a whole), "name" (surname + given-name tokens) or "-"
# (none of these: a phrase across words).
python3 - "$corpus" "$out/newwords.txt" <<'EOF'
import re, sys
corpus, listing = sys.argv[1], sys.argv[2]
words, groups, names = set(), set(), set()
with open(corpus, "rb") as f:
    for line in f:
        fields = line.split()
        if not fields or not 25 <= int(fields[0][6:8]) <= 27:
            continue
        group, previous = None, None
        for token in fields[1:]:
            opens = token.startswith(b"[")
            match = re.match(rb"(.*)/([^/\]]+)(\](\w+))?$", token.lstrip(b"["))
            if not match:
                continue
            word, tag, closes = match.group(1), match.group(2), match.group(4)
            words.add(word)
            if (tag == b"nr" and previous and previous[1] == b"nr" and
                    len(previous[0]) <= 4 and len(word) <= 4):
                names.add(previous[0] + word)
            previous = (word, tag)
            if opens:
                group = b""
            if group is not None:
                group += word
            if closes:
                groups.add(group)
                group = None
with open(listing, "rb") as f:
    for line in f:
        fields = line.split()
        kind = ""
        if len(fields) >= 2 and fields[0].isdigit():
            word = fields[-1].split(b"/")[0]
            kind = ("word" if word in words else "group" if word in groups
                    else "name" if word in names else "-")
        print(line.decode("gbk").rstrip("\n") + ("  " + kind if kind else ""))
EOF

# Removed words with a character that occurs at least 840 times in the
# test-only tables (the finder treats such a single character as a stop word
# and never merges it), and how many of each kind come back anywhere in the
# new-word list.
"$build/zivor-eval" -d "$out" --days 25-27 --new-words "$out/dropped.txt" --top 1000000 \
    "$corpus" > "$out/newwords-all.txt"
"$build/zivor-data" export unigram "$out/Data/CoreDict.unig" "$out/unigram.txt" > /dev/null
python3 - "$build/zivor-data" "$out" <<'EOF'
import subprocess, sys
tool, out = sys.argv[1], sys.argv[2]
words = [line.split()[0] for line in open(out + "/dropped.txt", "rb") if line.split()]
chars = sorted({w[i:i + 2] for w in words for i in range(0, len(w), 2)})
lookup = subprocess.run([tool.encode(), b"lookup", (out + "/Data/CoreDict.pdat").encode()] + chars,
                        capture_output=True, check=True).stdout
handle = dict((c, int(h)) for c, h in (l.split(b"\t") for l in lookup.splitlines() if b"\t" in l))
freq = {}
for line in open(out + "/unigram.txt"):
    fields = line.split("\t")
    if len(fields) == 2 and fields[0].isdigit():
        freq[int(fields[0])] = int(fields[1])
found = set()
for line in open(out + "/newwords-all.txt", "rb"):
    fields = line.split()
    if len(fields) >= 3 and fields[0].isdigit() and fields[1] == b"*":
        found.add(fields[2].split(b"/")[0])
kinds = {True: [0, 0], False: [0, 0]}
for w in words:
    frequent = max(freq.get(handle[w[i:i + 2]], 0) for i in range(0, len(w), 2)) >= 840
    kinds[frequent][0] += 1
    kinds[frequent][1] += w in found
print("removed words with a character of frequency >= 840: %d, found %d; the others: %d, found %d"
      % (kinds[True][0], kinds[True][1], kinds[False][0], kinds[False][1]))
EOF
