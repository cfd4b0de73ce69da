package ostra.palum;

import java.nio.ByteBuffer;
import java.nio.ByteOrder;
import java.nio.charset.StandardCharsets;
import java.util.ArrayList;
import java.util.List;

/** The library's result records: 68 bytes each, little-endian. */
final class Records {
    static final int SIZE = 68;
    static final int START = 0;
    static final int LENGTH = 4;
    static final int TAG = 8;
    static final int TAG_SIZE = 40;
    static final int WEIGHT = 60;

    private Records() {
    }

    /** The tokens of the records of an analysis of {@code text}. */
    static List<Token> tokens(Utf8Text text, byte[] records) {
        ByteBuffer buffer = ByteBuffer.wrap(records).order(ByteOrder.LITTLE_ENDIAN);
        List<Token> tokens = new ArrayList<>(records.length / SIZE);
        for (int at = 0; at + SIZE <= records.length; at += SIZE) {
            int startByte = buffer.getInt(at + START);
            int start = text.charIndex(startByte);
            int end = text.charIndex(startByte + buffer.getInt(at + LENGTH));
            tokens.add(new Token(text.text().substring(start, end), tag(records, at + TAG), start,
                    end, buffer.getDouble(at + WEIGHT)));
        }
        return tokens;
    }

    /** The NUL-filled tag name at {@code at}. */
    private static String tag(byte[] records, int at) {
        int length = 0;
        while (length < TAG_SIZE && records[at + length] != 0) {
            length++;
        }
        return new String(records, at, length, StandardCharsets.UTF_8);
    }
}
