package ostra.palum;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Path;
import java.util.List;
import java.util.concurrent.atomic.AtomicBoolean;
import java.util.concurrent.locks.Lock;
import java.util.concurrent.locks.ReentrantReadWriteLock;
import java.util.function.Supplier;

/**
 * Chinese lexical analysis of Java strings.
 *
 * <pre>{@code
 * try (Analyzer analyzer = Analyzer.open(Path.of("/opt/zivor"))) {  // holds Data/
 *     for (Token token : analyzer.analyze("今天北京下雪了")) {
 *         System.out.println(token.word() + "/" + token.tag());
 *     }
 * }
 * }</pre>
 *
 * <p>An analyzer may be used from any number of threads at once. The library
 * behind it is process-wide: the first analyzer opened initialises it (for
 * UTF-8) and the last one closed releases it, so analyzers open at the same
 * time share one data directory. Do not mix analyzers with {@link
 * ZIVOR#ZIVOR_Init} and {@link ZIVOR#ZIVOR_Exit}.
 */
public final class Analyzer implements AutoCloseable {
    private static final int UTF8 = 1;
    /** Read-held by every call, write-held while the library is initialised or released. */
    private static final ReentrantReadWriteLock LIBRARY = new ReentrantReadWriteLock();
    /** Held by the calls that use the library's main instance, one thread at a time. */
    private static final Object MAIN_INSTANCE = new Object();
    private static final ZIVOR NATIVE = new ZIVOR();
    private static int openCount;
    private static Path openDirectory;
    private static boolean openCoarse;
    /** The private data directory of a coarse-grained analysis, else null. */
    private static Path stagedDirectory;

    private final AtomicBoolean closed = new AtomicBoolean();

    private Analyzer() {
    }

    /**
     * An analyzer over the data of {@code directory}/Data, in fine-grained words.
     *
     * @throws IOException when the library cannot be initialised from it (the
     *     day's log, YYYYmmdd.log in the working directory, says why)
     * @throws IllegalStateException when analyzers over another directory are open
     */
    public static Analyzer open(Path directory) throws IOException {
        return open(directory, false);
    }

    /**
     * An analyzer over the data of {@code directory}/Data; with {@code
     * coarse}, the data's coarse-grained dictionary (GranDict.pdat) joins
     * organisations, places and long compounds into one word each, as {@code
     * zivor --coarse} does.
     *
     * @throws IOException when the library cannot be initialised from it (the
     *     day's log, YYYYmmdd.log in the working directory, says why), or
     *     coarse words are asked for and the data has no such dictionary
     * @throws IllegalStateException when analyzers over another directory, or
     *     of the other granularity, are open
     */
    public static Analyzer open(Path directory, boolean coarse) throws IOException {
        Path dir = directory.toAbsolutePath().normalize();
        Lock lock = LIBRARY.writeLock();
        lock.lock();
        try {
            if (openCount == 0) {
                Path loaded = coarse ? CoarseData.stage(dir) : dir;
                if (!ZIVOR.ZIVOR_Init(loaded.toString().getBytes(StandardCharsets.UTF_8), UTF8)) {
                    if (coarse) {
                        CoarseData.delete(loaded);
                    }
                    throw new IOException("cannot initialise the analysis from " + dir
                            + "/Data; the day's log in the working directory says why");
                }
                openDirectory = dir;
                openCoarse = coarse;
                stagedDirectory = coarse ? loaded : null;
            } else if (!openDirectory.equals(dir) || openCoarse != coarse) {
                throw new IllegalStateException("analyzers over " + openDirectory
                        + (openCoarse ? " (coarse)" : "") + " are open");
            }
            openCount++;
            return new Analyzer();
        } finally {
            lock.unlock();
        }
    }

    /**
     * The words of the text with their tags, in order; the words of a text
     * without line breaks cover it without gap. A NUL char is analysed as a
     * space.
     *
     * @throws IllegalStateException when the analyzer is closed or the
     *     analysis fails (memory ran out, or the text is longer than some
     *     350 MB of UTF-8)
     */
    public List<Token> analyze(String text) {
        Utf8Text utf8 = new Utf8Text(text);
        byte[] records = whileOpen(() -> ZIVOR.pooledRecords(utf8.bytes()));
        if (records == null) {
            throw new IllegalStateException("the analysis failed; the day's log says why");
        }
        return Records.tokens(utf8, records);
    }

    /** The text's keywords, at most {@code limit} of them, best first. */
    public List<Keyword> keywords(String text, int limit) {
        if (limit < 1) {
            throw new IllegalArgumentException("limit must be positive: " + limit);
        }
        return keywordList(text, limit - 1);
    }

    /** All the text's keywords, best first. */
    public List<Keyword> keywords(String text) {
        return keywordList(text, -1);
    }

    /** Whether the core dictionary holds the word. */
    public boolean isWord(String word) {
        byte[] bytes = new Utf8Text(word).bytes();
        synchronized (MAIN_INSTANCE) {
            return whileOpen(() -> NATIVE.ZIVOR_IsWord(bytes));
        }
    }

    /**
     * Adds a word with its tag to the user dictionary, which later analyses
     * prefer (the dictionary is saved only by {@link ZIVOR#ZIVOR_SaveTheUsrDic}).
     * True when the word is new, false when it was there (its tag is then
     * replaced).
     */
    public boolean addUserWord(String word, String tag) {
        String line = requireWord(word) + " " + requireWord(tag);
        byte[] entry = line.getBytes(StandardCharsets.UTF_8);
        return whileOpen(() -> NATIVE.ZIVOR_AddUserWord(entry)) == 1;
    }

    /** Removes a word from the user dictionary; true when it was there. */
    public boolean removeUserWord(String word) {
        byte[] bytes = requireWord(word).getBytes(StandardCharsets.UTF_8);
        return whileOpen(() -> NATIVE.ZIVOR_DelUsrWord(bytes)) != -1;
    }

    /** Closes the analyzer; the last one open releases the library. */
    @Override
    public void close() {
        if (!closed.compareAndSet(false, true)) {
            return;
        }
        Lock lock = LIBRARY.writeLock();
        lock.lock();
        try {
            if (--openCount == 0) {
                ZIVOR.ZIVOR_Exit();
                openDirectory = null;
                if (stagedDirectory != null) {
                    CoarseData.delete(stagedDirectory);
                    stagedDirectory = null;
                }
            }
        } finally {
            lock.unlock();
        }
    }

    private List<Keyword> keywordList(String text, int nMaxLimit) {
        byte[] bytes = new Utf8Text(text).bytes();
        byte[] list = whileOpen(() -> NATIVE.ZIVOR_GetKeyWords(bytes, nMaxLimit, true));
        return Keyword.parseList(new String(list, 0, list.length - 1, StandardCharsets.UTF_8));
    }

    /** Runs a call of the library while this analyzer is open. */
    private <T> T whileOpen(Supplier<T> call) {
        Lock lock = LIBRARY.readLock();
        lock.lock();
        try {
            if (closed.get()) {
                throw new IllegalStateException("the analyzer is closed");
            }
            return call.get();
        } finally {
            lock.unlock();
        }
    }

    /** A word or tag for the user dictionary: not empty, without blanks or NUL. */
    private static String requireWord(String word) {
        if (word.isEmpty() || word.chars().anyMatch(c -> Character.isWhitespace(c) || c == 0)) {
            throw new IllegalArgumentException("not a single word: \"" + word + "\"");
        }
        return word;
    }
}
