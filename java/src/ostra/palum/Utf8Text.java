package ostra.palum;

import java.nio.charset.StandardCharsets;

/**
 * A {@code String} as the UTF-8 bytes the library analyses, and the way back
 * from byte offsets in them to char indexes in the string.
 *
 * <p>A NUL char becomes a space: the library reads a text up to its first 0
 * byte, and a space keeps the bytes after it in the analysis at the same
 * offsets. An unpaired surrogate becomes '?', as {@link String#getBytes}
 * writes it.
 */
final class Utf8Text {
    private final String text;
    private final byte[] bytes;
    private int charCursor;
    private int byteCursor;

    Utf8Text(String text) {
        this.text = text;
        this.bytes = text.getBytes(StandardCharsets.UTF_8);
        for (int i = 0; i < bytes.length; i++) {
            if (bytes[i] == 0) {
                bytes[i] = ' ';
            }
        }
    }

    String text() {
        return text;
    }

    /** The encoded text. Callers do not change it. */
    byte[] bytes() {
        return bytes;
    }

    /**
     * The index of the char at which the character holding the byte offset
     * starts (the string's length at or beyond its end). Fastest when
     * offsets come in increasing order.
     */
    int charIndex(int byteOffset) {
        if (byteOffset < byteCursor) {
            charCursor = 0;
            byteCursor = 0;
        }
        while (charCursor < text.length()) {
            int width = utf8Width(charCursor);
            if (byteCursor + width > byteOffset) {
                break;
            }
            byteCursor += width;
            charCursor += Character.charCount(text.codePointAt(charCursor));
        }
        return charCursor;
    }

    /** Bytes of the code point at char index i: a surrogate pair takes 4, a lone surrogate 1. */
    private int utf8Width(int i) {
        char c = text.charAt(i);
        if (c < 0x80) {
            return 1;
        }
        if (c < 0x800) {
            return 2;
        }
        if (Character.isSurrogate(c)) {
            return Character.charCount(text.codePointAt(i)) == 2 ? 4 : 1;
        }
        return 3;
    }
}
