package ostra.palum;

import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertTrue;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import java.util.concurrent.CountDownLatch;
import java.util.concurrent.ExecutorService;
import java.util.concurrent.Executors;
import java.util.concurrent.Future;
import org.junit.Test;

/** Eight threads analysing at once get exactly what one thread gets. */
public class AnalyzerConcurrencyTest {
    private static final int THREADS = 8;
    private static final int ROUNDS = 3;

    /** What one text gives: its tokens and its keywords. */
    private record Result(List<Token> tokens, List<Keyword> keywords) {
        static Result of(Analyzer analyzer, String text) {
            return new Result(analyzer.analyze(text), analyzer.keywords(text, 5));
        }
    }

    @Test
    public void threadsGetTheResultsOfOneThread() throws Exception {
        Path data = TestData.copyOfData();
        ExecutorService pool = Executors.newFixedThreadPool(THREADS);
        try (Analyzer analyzer = Analyzer.open(data)) {
            List<String> texts = texts();
            List<Result> expected = texts.stream().map(t -> Result.of(analyzer, t)).toList();
            assertTrue(expected.stream().anyMatch(r -> !r.keywords().isEmpty()));
            CountDownLatch start = new CountDownLatch(1);
            List<Future<Integer>> runs = new ArrayList<>();
            for (int t = 0; t < THREADS; t++) {
                int first = t * texts.size() / THREADS;
                runs.add(pool.submit(() -> {
                    start.await();
                    int differing = 0;
                    for (int k = 0; k < texts.size() * ROUNDS; k++) {
                        int i = (first + k) % texts.size();
                        Result result = Result.of(analyzer, texts.get(i));
                        differing += result.equals(expected.get(i)) ? 0 : 1;
                    }
                    return differing;
                }));
            }
            start.countDown();
            for (Future<Integer> run : runs) {
                assertEquals("results differing from one thread's", 0, (int) run.get());
            }
        } finally {
            pool.shutdownNow();
            TestData.deleteTree(data);
        }
    }

    /** The sample lines and a text with a new word, as one text rotated by every fourth char. */
    private static List<String> texts() throws IOException {
        String joined = String.join("", TestData.sampleLines()) + "😀他经济学生。在经济学生了。和经济学生";
        List<String> all = new ArrayList<>();
        for (int cut = 0; cut < joined.length(); cut += 4) {
            if (!Character.isLowSurrogate(joined.charAt(cut))) {
                all.add(joined.substring(cut) + joined.substring(0, cut));
            }
        }
        return all;
    }
}
