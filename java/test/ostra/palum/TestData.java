package ostra.palum;

import static org.junit.Assert.assertEquals;

import java.io.IOException;
import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.Comparator;
import java.util.List;
import java.util.stream.Stream;

/** Data directories, texts and result readers shared by the tests. */
final class TestData {
    private TestData() {
    }

    /** The source tree, passed by the build as -Dzivor.source. */
    static Path sourceDir() {
        return Path.of(System.getProperty("zivor.source"));
    }

    /** A new temporary directory holding a copy of the shipped data files, which get written to. */
    static Path copyOfData() throws IOException {
        Path root = Files.createTempDirectory("zivor-java");
        Path data = Files.createDirectory(root.resolve("Data"));
        try (Stream<Path> files = Files.list(sourceDir().resolve("Data"))) {
            for (Path file : (Iterable<Path>) files.filter(Files::isRegularFile)::iterator) {
                Files.copy(file, data.resolve(file.getFileName()));
            }
        }
        Files.deleteIfExists(data.resolve("NewWord.lst"));
        return root;
    }

    static void deleteTree(Path root) throws IOException {
        try (Stream<Path> paths = Files.walk(root)) {
            for (Path path : (Iterable<Path>) paths.sorted(Comparator.reverseOrder())::iterator) {
                Files.delete(path);
            }
        }
    }

    static List<String> sampleLines() throws IOException {
        return Files.readAllLines(sourceDir().resolve("examples/sample.txt"));
    }

    static byte[] utf8(String text) {
        return text.getBytes(StandardCharsets.UTF_8);
    }

    /** The blank-separated entries of a native text result, whose only 0 byte must be its last. */
    static List<String> entries(byte[] result) {
        int end = 0;
        while (result[end] != 0) {
            end++;
        }
        assertEquals("one terminating 0", result.length - 1, end);
        String text = new String(result, 0, end, StandardCharsets.UTF_8).trim();
        return text.isEmpty() ? List.of() : Arrays.asList(text.split("\\s+"));
    }

    /** One record of ZIVOR.nativeProcAPara, read as the C structure lays it out. */
    record RawRecord(int start, int length, String pos, int wordId, int wordType, double weight) {
        static List<RawRecord> readAll(byte[] records) {
            assertEquals("whole records", 0, records.length % 68);
            ByteBuffer buffer = ByteBuffer.wrap(records).order(ByteOrder.LITTLE_ENDIAN);
            List<RawRecord> all = new ArrayList<>();
            while (buffer.hasRemaining()) {
                int start = buffer.getInt();
                int length = buffer.getInt();
                byte[] pos = new byte[40];
                buffer.get(pos);
                buffer.getInt();  // iPOS
                all.add(new RawRecord(start, length, new String(pos, StandardCharsets.UTF_8)
                        .replace("\0", ""), buffer.getInt(), buffer.getInt(), buffer.getDouble()));
            }
            return all;
        }

        String word(byte[] text) {
            return new String(text, start, length, StandardCharsets.UTF_8);
        }
    }
}
