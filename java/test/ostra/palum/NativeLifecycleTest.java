package ostra.palum;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertNull;
import static org.junit.Assert.assertTrue;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import org.junit.AfterClass;
import org.junit.BeforeClass;
import org.junit.FixMethodOrder;
import org.junit.Test;
import org.junit.runners.MethodSorters;

/**
 * The native methods before the process's first initialisation, after a
 * failed one, and around a successful one and its exit: the steps run in
 * order, in a JVM of their own.
 */
@FixMethodOrder(MethodSorters.NAME_ASCENDING)
public class NativeLifecycleTest {
    private static final byte[] EMPTY = {0};
    private static final byte[] TEXT = TestData.utf8("今天北京下雪了");
    private static final ZIVOR NATIVE = new ZIVOR();
    private static Path data;
    private static byte[] source;
    private static byte[] output;

    @BeforeClass
    public static void copyData() throws IOException {
        data = TestData.copyOfData();
        Files.write(data.resolve("input.txt"), TEXT);
        source = bytes(data.resolve("input.txt"));
        output = bytes(data.resolve("output.txt"));
    }

    @AfterClass
    public static void removeData() throws IOException {
        TestData.deleteTree(data);
    }

    @Test
    public void step1BeforeInitOnlyTheCheckedMethodsStopShort() {
        assertArrayEquals(EMPTY, NATIVE.ZIVOR_ParagraphProcess(TEXT, 1));
        assertNull(NATIVE.nativeProcAPara(TEXT));
        assertFalse(NATIVE.ZIVOR_FileProcess(source, output, 1));
        assertEquals(0.0f, NATIVE.ZIVOR_GetUniProb(TestData.utf8("北京")), 0.0f);
        assertFalse(NATIVE.ZIVOR_IsWord(TestData.utf8("北京")));
        assertEquals(0, NATIVE.ZIVOR_AddUserWord(TestData.utf8("大数据 nz")));
        assertEquals("the library's value", -1, NATIVE.ZIVOR_DelUsrWord(TestData.utf8("大数据")));
        assertArrayEquals(EMPTY, NATIVE.ZIVOR_GetKeyWords(TEXT, -1, true));
        assertTrue("whatever the library says", ZIVOR.ZIVOR_Exit());
    }

    @Test
    public void step2AfterAFailedInitTheCheckedMethodsCallThrough() {
        assertFalse(ZIVOR.ZIVOR_Init(bytes(data.resolve("no-such-directory")), 1));
        assertArrayEquals(EMPTY, NATIVE.ZIVOR_ParagraphProcess(TEXT, 1));
        assertArrayEquals("no records, but an array", new byte[0], NATIVE.nativeProcAPara(TEXT));
        assertTrue("reported as run", NATIVE.ZIVOR_FileProcess(source, output, 1));
    }

    @Test
    public void step3InitLoadsTheDataOnceAndExitReleasesIt() throws IOException {
        assertTrue(ZIVOR.ZIVOR_Init(bytes(data), 1));
        assertTrue(NATIVE.ZIVOR_FileProcess(source, output, 1));
        String written = Files.readString(data.resolve("output.txt"));
        assertEquals(TestData.entries(NATIVE.ZIVOR_ParagraphProcess(TEXT, 1)),
                TestData.entries(TestData.utf8(written + "\0")));
        assertTrue(NATIVE.ZIVOR_FileProcess(bytes(data.resolve("missing")), output, 1));

        assertTrue(ZIVOR.ZIVOR_Exit());
        assertArrayEquals(EMPTY, NATIVE.ZIVOR_ParagraphProcess(TEXT, 1));
        assertTrue(ZIVOR.ZIVOR_Exit());
        assertTrue("again", ZIVOR.ZIVOR_Init(bytes(data), 1));
        assertTrue(NATIVE.nativeProcAPara(TEXT).length > 0);
        assertTrue(ZIVOR.ZIVOR_Exit());
    }

    private static byte[] bytes(Path path) {
        return TestData.utf8(path.toString());
    }
}
