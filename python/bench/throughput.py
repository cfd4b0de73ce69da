"""Throughput of zivor.cut on one and on two Python threads, beside
jieba.lcut (Debian's python3-jieba), over the same text in the same run.

    /usr/bin/python3 python/bench/throughput.py RAW.txt [ROUNDS]

RAW.txt is a UTF-8 text analysed one line at a time (devsplit.py writes the
development split). Each figure is the best of ROUNDS (default 3) passes
over all the lines, after one pass to warm up; zivor's two-thread passes
give each thread every other line.
"""

import os
import sys
import threading
import time

import zivor


def words_of(lines):
    return [list(zivor.cut(line)) for line in lines]


def on_threads(lines, count):
    results = [None] * count

    def work(index):
        results[index] = words_of(lines[index::count])

    threads = [threading.Thread(target=work, args=(i,)) for i in range(count)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    return results


def best_time(run, rounds):
    """(wall, CPU) seconds of the fastest of `rounds` runs; CPU above wall
    means the threads ran at once."""
    run()
    best = (float("inf"), 0.0)
    for _ in range(rounds):
        start, cpu = time.perf_counter(), time.process_time()
        run()
        best = min(best, (time.perf_counter() - start, time.process_time() - cpu))
    return best


def report(name, seconds, characters, size, tokens):
    wall, cpu = seconds
    print("%-22s %6.3f s (CPU %6.3f s)  %7.0f characters/s  %5.2f MB/s  %d tokens" %
          (name, wall, cpu, characters / wall, size / wall / 1e6, tokens))


def main():
    path = sys.argv[1]
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    with open(path, encoding="utf-8") as f:
        lines = [line.rstrip("\n") for line in f]
    characters = sum(map(len, lines))
    size = sum(len(line.encode("utf-8")) for line in lines)
    print("%s: %d lines, %d characters, %d bytes UTF-8; load %s; %d CPUs" %
          (path, len(lines), characters, size, " ".join("%.2f" % x for x in os.getloadavg()),
           os.cpu_count()))
    one = words_of(lines)
    two = on_threads(lines, 2)
    merged = [None] * len(lines)
    merged[0::2], merged[1::2] = two
    assert merged == one, "two threads gave other words than one"
    tokens = sum(1 for words in one for w in words if not w.isspace())
    report("zivor.cut, 1 thread", best_time(lambda: words_of(lines), rounds), characters, size,
           tokens)
    report("zivor.cut, 2 threads", best_time(lambda: on_threads(lines, 2), rounds),
           characters, size, tokens)
    try:
        import jieba
    except ImportError:
        print("jieba: not installed (apt-get install python3-jieba)")
        return
    jieba.setLogLevel(60)
    jieba.initialize()
    jieba_tokens = sum(1 for line in lines for w in jieba.lcut(line) if not w.isspace())
    report("jieba.lcut, 1 thread", best_time(lambda: [jieba.lcut(l) for l in lines], rounds),
           characters, size, jieba_tokens)


if __name__ == "__main__":
    main()
