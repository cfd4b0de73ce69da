package ostra.palum;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertTrue;

import java.io.IOException;
import java.nio.charset.Charset;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import ostra.palum.TestData.RawRecord;
import org.junit.AfterClass;
import org.junit.BeforeClass;
import org.junit.Test;

/** The native methods' results on the shipped data, initialised for UTF-8. */
public class NativeMethodsTest {
    private static final String SENTENCE = "1998年1月1日，江泽民主席在北京发表了新年讲话。";
    /** "经济学生" recurs in every other company: the text's one new word and keyword. */
    private static final String NEW_WORD_TEXT = "他经济学生。在经济学生了。和经济学生的。对经济学生，";
    private static final ZIVOR NATIVE = new ZIVOR();
    private static Path data;

    @BeforeClass
    public static void init() throws IOException {
        data = TestData.copyOfData();
        assertTrue(ZIVOR.ZIVOR_Init(path("."), 1));
    }

    @AfterClass
    public static void exit() throws IOException {
        ZIVOR.ZIVOR_Exit();
        TestData.deleteTree(data);
    }

    @Test
    public void elementLengthsAreTheRecordAndItsFields() {
        int[] lengths = new int[10];
        for (int i = 0; i < lengths.length; i++) {
            lengths[i] = NATIVE.ZIVOR_GetElemLength(i - 1);
        }
        assertArrayEquals(new int[] {0, 68, 4, 4, 40, 4, 4, 4, -60, 0}, lengths);
    }

    @Test
    public void recordsTileTheTextAndAgreeWithTheTaggedTextAndTheDictionary() {
        byte[] text = TestData.utf8(SENTENCE);
        List<RawRecord> records = RawRecord.readAll(NATIVE.nativeProcAPara(text));
        List<String> tagged = TestData.entries(NATIVE.ZIVOR_ParagraphProcess(text, 1));
        assertEquals(tagged.size(), records.size());
        int offset = 0;
        for (int i = 0; i < records.size(); i++) {
            RawRecord record = records.get(i);
            assertEquals(offset, record.start());
            offset += record.length();
            assertEquals(tagged.get(i), record.word(text) + "/" + record.pos());
            if (record.wordId() >= 0) {  // a dictionary word weighs -ln of its probability
                double probability = NATIVE.ZIVOR_GetUniProb(TestData.utf8(record.word(text)));
                assertEquals(tagged.get(i), -Math.log(probability), record.weight(), 1e-5);
            }
        }
        assertEquals(text.length, offset);
    }

    @Test
    public void anEmbeddedNulEndsTheText() {
        byte[] whole = TestData.utf8("北京");
        byte[] cut = TestData.utf8("北京\0下雪了");
        assertArrayEquals(NATIVE.ZIVOR_ParagraphProcess(whole, 1),
                NATIVE.ZIVOR_ParagraphProcess(cut, 1));
        assertArrayEquals(NATIVE.nativeProcAPara(whole), NATIVE.nativeProcAPara(cut));
        assertTrue(NATIVE.ZIVOR_IsWord(cut));
        assertArrayEquals(new byte[] {0}, NATIVE.ZIVOR_ParagraphProcess(TestData.utf8("\0北京"), 1));
    }

    @Test
    public void keywordsAndNewWordsOfTextsFilesAndCollections() throws IOException {
        byte[] text = TestData.utf8(NEW_WORD_TEXT);
        assertEquals(List.of("经济学生"), TestData.entries(NATIVE.ZIVOR_GetKeyWords(text, 0, false)));
        assertEquals(List.of("经济学生"), TestData.entries(NATIVE.ZIVOR_GetNewWords(text, -1, false)));
        Files.write(data.resolve("text.txt"), List.of(NEW_WORD_TEXT));
        assertArrayEquals(NATIVE.ZIVOR_GetKeyWords(text, 5, true),
                NATIVE.ZIVOR_GetFileKeyWords(path("text.txt"), 5, true));
        assertArrayEquals(new byte[] {0}, NATIVE.ZIVOR_GetFileKeyWords(path("missing"), 5, true));

        assertTrue(NATIVE.ZIVOR_NWI_Start());
        assertEquals(1, NATIVE.ZIVOR_NWI_AddFile(path("text.txt")));
        assertTrue(NATIVE.ZIVOR_NWI_AddMem(text));
        assertTrue(NATIVE.ZIVOR_NWI_Complete());
        assertEquals(List.of("经济学生"), TestData.entries(NATIVE.ZIVOR_NWI_GetResult(false)));
        assertEquals(1, NATIVE.ZIVOR_NWI_Result2UserDict());
        assertTrue(tagged("经济学生很多").contains("经济学生/n_new"));
    }

    @Test
    public void userWordsAreAddedUsedDeletedAndImported() throws IOException {
        byte[] entry = TestData.utf8("江泽民主席 ux");
        assertEquals(1, NATIVE.ZIVOR_AddUserWord(entry));
        assertEquals(0, NATIVE.ZIVOR_AddUserWord(entry));
        byte[] sentence = TestData.utf8(SENTENCE);
        assertTrue(RawRecord.readAll(NATIVE.nativeProcAPara(sentence)).stream()
                .anyMatch(r -> r.wordType() == 1 && r.word(sentence).equals("江泽民主席")));
        assertEquals(1, NATIVE.ZIVOR_SaveTheUsrDic());
        assertTrue(NATIVE.ZIVOR_DelUsrWord(TestData.utf8("江泽民主席")) >= 0);
        assertEquals(-1, NATIVE.ZIVOR_DelUsrWord(TestData.utf8("江泽民主席")));

        Files.write(data.resolve("user.txt"), List.of("江泽民主席 ux", "新年讲话 uy"),
                Charset.forName("GBK"));  // always GBK
        assertEquals(2, NATIVE.ZIVOR_ImportUserDict(path("user.txt")));
        assertTrue(tagged(SENTENCE).containsAll(List.of("江泽民主席/ux", "新年讲话/uy")));
        assertEquals(0, NATIVE.ZIVOR_ImportUserDict(path("missing")));
    }

    private static byte[] path(String name) {
        return TestData.utf8(data.resolve(name).toString());
    }

    private static List<String> tagged(String text) {
        return TestData.entries(NATIVE.ZIVOR_ParagraphProcess(TestData.utf8(text), 1));
    }
}
