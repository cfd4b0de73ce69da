package ostra.palum;

import java.util.ArrayList;
import java.util.List;

/**
 * A keyword of a text.
 *
 * @param word the keyword
 * @param tag its part-of-speech tag
 * @param weight its score; the list ranks keywords by it, highest first
 */
public record Keyword(String word, String tag, double weight) {
    /** The entries between which the library's keyword lists put two spaces. */
    private static final String SEPARATOR = "  ";

    /** The keywords of a list with weights: "word/tag/weight  word/tag/weight  ". */
    static List<Keyword> parseList(String list) {
        List<Keyword> keywords = new ArrayList<>();
        for (String entry : list.split(SEPARATOR)) {
            if (!entry.isEmpty()) {
                keywords.add(parse(entry));
            }
        }
        return keywords;
    }

    /** One "word/tag/weight" entry; the word itself may hold slashes. */
    private static Keyword parse(String entry) {
        int weightAt = entry.lastIndexOf('/');
        int tagAt = weightAt > 0 ? entry.lastIndexOf('/', weightAt - 1) : -1;
        if (tagAt <= 0) {
            throw new IllegalStateException("keyword entry without tag and weight: " + entry);
        }
        return new Keyword(entry.substring(0, tagAt), entry.substring(tagAt + 1, weightAt),
                Double.parseDouble(entry.substring(weightAt + 1)));
    }
}
