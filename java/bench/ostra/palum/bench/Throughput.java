package ostra.palum.bench;

import java.io.IOException;
import java.io.PrintWriter;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.atomic.AtomicInteger;
import java.util.concurrent.atomic.AtomicLong;
import java.util.stream.Collectors;
import ostra.palum.Analyzer;
import ostra.palum.Token;

/**
 * Analyses a UTF-8 text file line by line with {@link Analyzer}, the Java
 * counterpart of capi_throughput.
 *
 * <pre>
 * Throughput DIR FILE THREADS ROUNDS   the analysis rate, after three rounds to warm up
 * Throughput --words DIR FILE          each line's words, separated by spaces
 * </pre>
 */
public final class Throughput {
    /** Rounds run before the measured ones, long enough for the JIT to compile the hot paths. */
    private static final int WARM_UP_ROUNDS = 3;

    private Throughput() {
    }

    public static void main(String[] args) throws IOException, InterruptedException {
        boolean words = args.length > 0 && args[0].equals("--words");
        int first = words ? 1 : 0;
        if (args.length != first + (words ? 2 : 4)) {
            System.err.println("usage: Throughput DIR FILE THREADS ROUNDS | --words DIR FILE");
            System.exit(2);
        }
        List<String> lines = Files.readAllLines(Path.of(args[first + 1]));
        try (Analyzer analyzer = Analyzer.open(Path.of(args[first]))) {
            if (words) {
                printWords(analyzer, lines);
            } else {
                measure(analyzer, lines, Integer.parseInt(args[2]), Integer.parseInt(args[3]));
            }
        }
    }

    private static void printWords(Analyzer analyzer, List<String> lines) {
        PrintWriter out = new PrintWriter(System.out, false, StandardCharsets.UTF_8);
        for (String line : lines) {
            out.println(analyzer.analyze(line).stream().map(Token::word)
                    .collect(Collectors.joining(" ")));
        }
        out.flush();
    }

    private static void measure(Analyzer analyzer, List<String> lines, int threads, int rounds)
            throws InterruptedException {
        long bytes = lines.stream().mapToLong(l -> l.getBytes(StandardCharsets.UTF_8).length).sum();
        run(analyzer, lines, threads, WARM_UP_ROUNDS);
        long begin = System.nanoTime();
        long tokens = run(analyzer, lines, threads, rounds);
        double seconds = (System.nanoTime() - begin) / 1e9;
        System.out.printf(
                "java  %d thread(s): %6.3f MB/s  (%d bytes x %d rounds, %d words, %.2f s)%n",
                threads, bytes * rounds / seconds / 1e6, bytes, rounds, tokens, seconds);
    }

    /** Analyses every line `rounds` times, the threads taking lines in turn; returns the words. */
    private static long run(Analyzer analyzer, List<String> lines, int threads, int rounds)
            throws InterruptedException {
        AtomicInteger next = new AtomicInteger();
        AtomicLong tokens = new AtomicLong();
        int total = lines.size() * rounds;
        List<Thread> workers = new ArrayList<>();
        for (int t = 0; t < threads; t++) {
            Thread worker = new Thread(() -> {
                for (int i = next.getAndIncrement(); i < total; i = next.getAndIncrement()) {
                    tokens.addAndGet(analyzer.analyze(lines.get(i % lines.size())).size());
                }
            });
            worker.start();
            workers.add(worker);
        }
        for (Thread worker : workers) {
            worker.join();
        }
        return tokens.get();
    }
}
