package ostra.palum;

/**
 * One word of an analysis.
 *
 * @param word the word, exactly as it stands in the analysed text
 * @param tag its part-of-speech tag (empty when tagging is off)
 * @param start index of its first char in the analysed {@code String}
 * @param end index after its last char, so that {@code word} is {@code
 *     text.substring(start, end)}
 * @param weight -ln of the word's smoothed unigram probability
 */
public record Token(String word, String tag, int start, int end, double weight) {
}
