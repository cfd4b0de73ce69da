package ostra.palum;

/**
 * The native methods of libZIVOR, one for each call of the C interface.
 *
 * <p>Texts are byte arrays in the encoding given to {@link #ZIVOR_Init} (0 GBK,
 * 1 UTF-8, 2 BIG5, 3 GBK written with traditional characters). A byte array
 * argument is read up to its first 0 byte, or to its end when it has none; a
 * text result is a new array holding the text and a terminating 0, an empty
 * or failed result the single byte 0. Offsets in results are byte offsets in
 * the text as passed. {@link Analyzer} offers the same analysis with
 * {@code String}s and is what most callers want.
 *
 * <p>The library is process-wide: {@code ZIVOR_Init} and {@code ZIVOR_Exit}
 * must not run while any other call is under way; the analysis, keyword and
 * new-word methods may run on any number of threads at once; {@code
 * ZIVOR_IsWord}, {@code ZIVOR_GetUniProb} and the {@code ZIVOR_NWI_} methods
 * one thread at a time.
 *
 * <p>Until the first {@code ZIVOR_Init} of the process, {@code
 * ZIVOR_ParagraphProcess}, {@code ZIVOR_FileProcess}, {@code
 * ZIVOR_GetUniProb}, {@code ZIVOR_IsWord}, {@code ZIVOR_ImportUserDict},
 * {@code ZIVOR_AddUserWord} and {@code nativeProcAPara} return their failure
 * value without reaching the library. From then on, even when that {@code
 * ZIVOR_Init} failed and after {@code ZIVOR_Exit}, every method calls
 * through and the library answers as an uninitialised library does.
 *
 * <p>Loading this class loads {@code libZIVOR.so} from {@code
 * java.library.path}.
 */
public final class ZIVOR {
    static {
        System.loadLibrary("ZIVOR");
    }

    /**
     * Initialises the library from {@code sInitDirPath/Data} (an empty path:
     * the working directory). True when the library is ready, also when it
     * already was; false on failure, with the reason in the day's log
     * (YYYYmmdd.log in the working directory).
     */
    public static native boolean ZIVOR_Init(byte[] sInitDirPath, int encoding);

    /** Releases everything {@link #ZIVOR_Init} built. Always true. */
    public static native boolean ZIVOR_Exit();

    /** The analysed text: words, each with its tag when bPOSTagged is non-zero. */
    public native byte[] ZIVOR_ParagraphProcess(byte[] sParagraph, int bPOSTagged);

    /**
     * Analyses the file sSrcFilename line by line into sDstFilename. True
     * once the library has been initialised, even when a file cannot be read
     * or written; false before.
     */
    public native boolean ZIVOR_FileProcess(byte[] sSrcFilename, byte[] sDstFilename,
            int bPOSTagged);

    /** The word's smoothed unigram probability in the core dictionary. */
    public native float ZIVOR_GetUniProb(byte[] sWord);

    /** Whether the core dictionary holds the word. */
    public native boolean ZIVOR_IsWord(byte[] sWord);

    /**
     * Replaces the user dictionary with the words of a GBK text file and
     * saves it; the number of words, 0 on failure.
     */
    public native int ZIVOR_ImportUserDict(byte[] sFilename);

    /** Adds "WORD [TAG]" to the user dictionary: 1 when new, 0 otherwise. */
    public native int ZIVOR_AddUserWord(byte[] sWord);

    /** Deletes a user word: its handle, -1 when absent. */
    public native int ZIVOR_DelUsrWord(byte[] sWord);

    /** Saves the user dictionary: 1 on success. */
    public native int ZIVOR_SaveTheUsrDic();

    /** Adds the collection's new words to the user dictionary and saves it. */
    public native int ZIVOR_NWI_Result2UserDict();

    /** Chooses the tag set of later results (0 to 3); always 0. */
    public native int ZIVOR_SetPOSmap(int nPosMap);

    /**
     * Sizes in a result record of {@link #nativeProcAPara}: 0 the record
     * (68), 1 start, 2 length, 3 the tag name sPOS (40), 4 iPOS, 5 word_ID,
     * 6 word_type (4 each); 7 gives the record's size less the sum of entries
     * 0 to 6, which counts the record itself and so is -60; any other index 0.
     * The weight, a little-endian double, sits at byte 60.
     */
    public native int ZIVOR_GetElemLength(int nIndex);

    /** Clears the new-word collection. */
    public native boolean ZIVOR_NWI_Start();

    /** Adds a file to the collection: 0 when it cannot be read, -1 when the collection is full. */
    public native int ZIVOR_NWI_AddFile(byte[] sFilename);

    /** Adds a text to the collection. */
    public native boolean ZIVOR_NWI_AddMem(byte[] sText);

    /** Finds the new words of the collection. */
    public native boolean ZIVOR_NWI_Complete();

    /** The collection's new words, each followed by two spaces; with weights "word/tag/weight". */
    public native byte[] ZIVOR_NWI_GetResult(boolean bWeightOut);

    /**
     * The text's keywords in ranking order, each followed by two spaces; with
     * weights "word/tag/weight". nMaxLimit is one less than the number wanted;
     * -1 gives all.
     */
    public native byte[] ZIVOR_GetKeyWords(byte[] sLine, int nMaxLimit, boolean bWeightOut);

    /** {@link #ZIVOR_GetKeyWords} for a file. */
    public native byte[] ZIVOR_GetFileKeyWords(byte[] sFilename, int nMaxLimit,
            boolean bWeightOut);

    /** The text's new words, listed like keywords. */
    public native byte[] ZIVOR_GetNewWords(byte[] sLine, int nMaxLimit, boolean bWeightOut);

    /** {@link #ZIVOR_GetNewWords} for a file. */
    public native byte[] ZIVOR_GetFileNewWords(byte[] sFilename, int nMaxLimit,
            boolean bWeightOut);

    /**
     * The analysis as raw result records, {@code ZIVOR_GetElemLength(0)}
     * bytes each, little-endian: start and length (bytes in sLine), the tag
     * name (NUL-filled), iPOS, word_ID, word_type and the weight.
     *
     * <p>Each call takes an analysis instance of the library's pool and never
     * hands it back: the pool, and the memory it holds, grows by one instance
     * per call until {@link #ZIVOR_Exit}. Use {@link Analyzer#analyze} for
     * repeated analyses.
     */
    public native byte[] nativeProcAPara(byte[] sLine);

    /**
     * The text's result records, laid out as those of {@link
     * #nativeProcAPara}, user words taken, through a pooled analysis instance
     * that goes back to the pool; null when the library is not initialised
     * or the analysis fails. The analysis behind {@link Analyzer#analyze}.
     */
    static native byte[] pooledRecords(byte[] text);
}
