package ostra.palum;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.Comparator;
import java.util.stream.Stream;

/**
 * The private data directory of a coarse-grained analysis: its Data links to
 * every file of the real one, and its copy of Configure.xml switches the
 * granularity dictionary (GranDict.pdat) on in front of the real settings,
 * where the first element of a name is the one that counts.
 */
final class CoarseData {
    private static final String CONFIGURE = "Configure.xml";
    private static final byte[] SWITCH =
            "<GranularityContorl>on</GranularityContorl>\n".getBytes(StandardCharsets.US_ASCII);

    private CoarseData() {
    }

    /**
     * The private directory (it holds Data) for the data of {@code directory};
     * {@link #delete} removes it.
     *
     * @throws IOException when the data has no granularity dictionary or the
     *     directory cannot be made
     */
    static Path stage(Path directory) throws IOException {
        Path data = directory.resolve("Data");
        Path dictionary = data.resolve("GranDict.pdat");
        if (!Files.isRegularFile(dictionary)) {
            throw new IOException("no coarse-grained dictionary " + dictionary
                    + " (zivor-data coarse builds it)");
        }
        Path root = Files.createTempDirectory("zivor-coarse");
        try {
            Path copy = Files.createDirectory(root.resolve("Data"));
            try (Stream<Path> files = Files.list(data)) {
                for (Path file : (Iterable<Path>) files::iterator) {
                    if (!file.getFileName().toString().equals(CONFIGURE)) {
                        Files.createSymbolicLink(copy.resolve(file.getFileName()), file);
                    }
                }
            }
            byte[] settings = Files.readAllBytes(data.resolve(CONFIGURE));
            byte[] configuration = new byte[SWITCH.length + settings.length];
            System.arraycopy(SWITCH, 0, configuration, 0, SWITCH.length);
            System.arraycopy(settings, 0, configuration, SWITCH.length, settings.length);
            Files.write(copy.resolve(CONFIGURE), configuration);
            return root;
        } catch (IOException e) {
            delete(root);
            throw e;
        }
    }

    /** Removes a directory {@link #stage} made; links are removed, never followed. */
    static void delete(Path root) {
        try (Stream<Path> paths = Files.walk(root)) {
            for (Path path : (Iterable<Path>) paths.sorted(Comparator.reverseOrder())::iterator) {
                Files.deleteIfExists(path);
            }
        } catch (IOException e) {
            // A temporary directory left behind is harmless.
        }
    }
}
