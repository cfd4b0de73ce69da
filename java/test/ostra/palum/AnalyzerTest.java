package ostra.palum;

import static org.junit.Assert.assertArrayEquals;
import static org.junit.Assert.assertEquals;
import static org.junit.Assert.assertFalse;
import static org.junit.Assert.assertThrows;
import static org.junit.Assert.assertTrue;

import java.io.IOException;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.List;
import ostra.palum.TestData.RawRecord;
import org.junit.After;
import org.junit.AfterClass;
import org.junit.Before;
import org.junit.BeforeClass;
import org.junit.Test;

/** The String interface: tokens, keywords, user words and the analyzers' life. */
public class AnalyzerTest {
    private static Path data;
    private Analyzer analyzer;

    @BeforeClass
    public static void copyData() throws IOException {
        data = TestData.copyOfData();
    }

    @AfterClass
    public static void removeData() throws IOException {
        TestData.deleteTree(data);
    }

    @Before
    public void open() throws IOException {
        analyzer = Analyzer.open(data);
    }

    @After
    public void close() {
        analyzer.close();
    }

    @Test
    public void coarseAnalyzersJoinCompoundsOfTheData() throws IOException {
        String text = "中国科学院的专家";
        assertEquals("中国", analyzer.analyze(text).get(0).word());
        assertThrows(IllegalStateException.class, () -> Analyzer.open(data, true));
        analyzer.close();
        try (Analyzer coarse = Analyzer.open(data, true)) {
            assertEquals("中国科学院", coarse.analyze(text).get(0).word());
            assertThrows(IllegalStateException.class, () -> Analyzer.open(data));
        }
        analyzer = Analyzer.open(data);
        assertEquals("中国", analyzer.analyze(text).get(0).word());
    }

    @Test
    public void tokensAreTheNativeRecordsInTheStringsOwnChars() throws IOException {
        List<String> texts = new ArrayList<>(TestData.sampleLines());
        texts.add("我爱😀北京abc天安门");  // a surrogate pair: 2 chars, 4 bytes
        texts.add("a\uD800北京b\uDC00c");   // unpaired surrogates: 1 char, 1 byte ('?')
        texts.add("");
        for (String text : texts) {
            byte[] utf8 = TestData.utf8(text);
            List<RawRecord> records = RawRecord.readAll(new ZIVOR().nativeProcAPara(utf8));
            List<Token> tokens = analyzer.analyze(text);
            assertEquals(records.size(), tokens.size());
            int end = 0;
            for (int i = 0; i < tokens.size(); i++) {
                Token token = tokens.get(i);
                assertEquals(text, end, token.start());
                end = token.end();
                assertEquals(text.substring(token.start(), end), token.word());
                assertEquals(records.get(i).pos(), token.tag());
                assertEquals(records.get(i).weight(), token.weight(), 0.0);
            }
            assertEquals(text.length(), end);
        }
    }

    @Test
    public void aNulCharIsAnalysedAsASpace() {
        List<String> withNul = analyzer.analyze("北京\0下雪了").stream().map(Token::word).toList();
        List<String> withSpace = analyzer.analyze("北京 下雪了").stream().map(Token::word).toList();
        assertEquals(withSpace, withNul.stream().map(w -> w.replace('\0', ' ')).toList());
    }

    @Test
    public void keywordsComeBestFirstUpToTheLimit() {
        String text = "他经济学生。在经济学生了。和经济学生的。对经济学生，";
        List<Keyword> all = analyzer.keywords(text);
        assertEquals(new Keyword("经济学生", "n_new", all.get(0).weight()), all.get(0));
        assertEquals(all.subList(0, 1), analyzer.keywords(text, 1));
        assertEquals(List.of(), analyzer.keywords("一", 5));
        assertThrows(IllegalArgumentException.class, () -> analyzer.keywords(text, 0));
    }

    @Test
    public void userWordsChangeLaterAnalyses() {
        String text = "江泽民主席在北京发表了新年讲话。";
        assertTrue(analyzer.isWord("北京"));
        assertTrue(analyzer.addUserWord("江泽民主席", "ux"));
        assertFalse("present: its tag changes", analyzer.addUserWord("江泽民主席", "uy"));
        Token first = analyzer.analyze(text).get(0);
        assertEquals(new Token("江泽民主席", "uy", 0, 5, first.weight()), first);
        assertTrue(analyzer.removeUserWord("江泽民主席"));
        assertFalse(analyzer.removeUserWord("江泽民主席"));
        assertTrue(analyzer.analyze(text).get(0).end() < 5);
        assertThrows(IllegalArgumentException.class, () -> analyzer.addUserWord("两 个", "n"));
    }

    @Test
    public void theLastAnalyzerClosedReleasesTheLibrary() throws IOException {
        Analyzer second = Analyzer.open(data.resolve("."));
        analyzer.close();
        assertThrows(IllegalStateException.class, () -> analyzer.analyze("北京"));
        assertEquals("北京", second.analyze("北京").get(0).word());
        assertThrows(IllegalStateException.class, () -> Analyzer.open(data.resolve("Data")));
        second.close();
        second.close();
        byte[] released = new ZIVOR().ZIVOR_ParagraphProcess(TestData.utf8("北京"), 1);
        assertArrayEquals(new byte[] {0}, released);
        assertThrows(IOException.class, () -> Analyzer.open(data.resolve("Data")));
    }
}
