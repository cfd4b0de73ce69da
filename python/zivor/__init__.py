"""ZIVOR for Python: Chinese word segmentation, tagging, keywords, new words,
fingerprints and user dictionaries over the ZIVOR library.

    import zivor
    zivor.lcut("今天北京下雪了")          # ['今天', '北京', '下雪', '了']
    zivor.tag("今天北京下雪了")           # [('今天', 't'), ('北京', 'ns'), ...]
    for word, tag, start, end in zivor.tokenize(text): ...
    zivor.extract_keywords(text, top_k=10, with_weight=True)

How it reaches the library: ctypes over libZIVOR.so rather than a compiled
extension. The C interface is small and takes plain byte strings, so nothing
needs compiling at install time and one package serves every Python 3 of the
machine. ctypes releases the GIL for the whole of each foreign call, which is
where the time goes, so threads analyse in parallel; the Python side only
slices the text by the records' offsets. The library keeps each thread's
last result in a buffer of its own, valid until that thread's next call:
texts are copied by ctypes before control returns to Python, and records are
copied at once and the copy checked against a per-thread call counter, so a
signal handler or finaliser that analyses on the same thread in between
cannot hand back someone else's words.

The library is initialised once per process, with UTF-8 text and the shipped
data, on first use (or by initialize()), and stays so until the process
ends; a failure raises ZivorError with the reason the library logged.

Texts are analysed line by line, a line ending at "\\n", "\\r\\n" or "\\r", each
as a text of its own, which is how the zivor command reads its input: the
words of a line never depend on the lines around it, and ZIVOR_GetSafeCut,
whose cuts stay within a text's first line, can bound every line. A line
longer than a megabyte is analysed in pieces cut where it allows, with the
result of the whole line, so memory stays bounded however long the text.
Keywords, new words and fingerprints need the whole text at once.

Words always join back into the text: blanks are words of their own (with an
empty tag), including the blanks at the start of a long line and a
byte-order mark, which the library skips. NUL characters are analysed as
blanks but returned as they are.
"""

import ctypes
import re
import struct
import threading

from ._native import TAG_SETS, ZivorError, initialize, status
from . import _native

__all__ = ["cut", "lcut", "tag", "tokenize", "extract_keywords", "new_words", "fingerprint",
           "add_word", "del_word", "load_userdict", "initialize", "status", "ZivorError",
           "TAG_SETS"]
__version__ = "0.1"

# result_t: start, length, the NUL-filled tag, then iPOS, word_ID,
# word_type and weight, 68 bytes packed to 4.
_RECORD_BYTES = 68
_SPAN = struct.Struct("<ii60x")
_TAGGED = struct.Struct("<ii40s20x")
assert _SPAN.size == _TAGGED.size == _RECORD_BYTES

# Lines longer than this many bytes are analysed in pieces.
_PIECE_BYTES = 1 << 20
_INT_MAX = 2 ** 31 - 1

_LINE = re.compile(r"[^\r\n]*(?:\r\n|\r|\n)?")
_calls = threading.local()


def _text(text):
    if isinstance(text, str):
        return text
    if isinstance(text, (bytes, bytearray)):
        return bytes(text).decode("utf-8")
    raise TypeError("text must be str or UTF-8 bytes, not %s" % type(text).__name__)


def _lines(text):
    """(index of the line in the text, the line) for each line of the text."""
    if "\n" not in text and "\r" not in text:
        if text:
            yield 0, text
        return
    for match in _LINE.finditer(text):
        if match.end() > match.start():
            yield match.start(), match.group()


def _records(piece):
    """The records of one piece of text, copied out of the library."""
    lib = _native.ready()
    count = ctypes.c_int()
    while True:
        # A nested call on this thread between the analysis and the copy
        # (a signal handler, a finaliser) would overwrite the thread's
        # records: the counter tells, and the analysis is done again.
        mark = getattr(_calls, "count", 0) + 1
        _calls.count = mark
        address = lib.ParagraphProcessA(piece, ctypes.byref(count), True)
        raw = ctypes.string_at(address, count.value * _RECORD_BYTES) if address else None
        if _calls.count == mark:
            break
    if raw is None:
        raise _native.failure("analysing a text of %d bytes" % len(piece))
    return raw


def _pieces(data):
    """(offset, piece) of a line's UTF-8 bytes: the whole line, or pieces of
    about _PIECE_BYTES cut where the analysis of the parts one after the
    other is that of the whole."""
    total = len(data)
    if total <= _PIECE_BYTES:
        yield 0, data
        return
    lib = _native.ready()
    # The address of the bytes object's own buffer: no copy of the line.
    address = ctypes.cast(ctypes.c_char_p(data), ctypes.c_void_p).value
    done = 0
    while total - done > _PIECE_BYTES:
        window, cut = _PIECE_BYTES, 0
        while True:
            given = min(window, total - done, _INT_MAX)
            cut = lib.GetSafeCut(address + done, given)
            if cut > 0 or given == total - done or given == _INT_MAX:
                break
            window *= 2  # no sentence start in reach yet: look further
        if cut <= 0:
            break
        yield done, data[done:done + cut]
        done += cut
    yield done, data[done:]


def _batches(text, tagged):
    """The tokens of a text, a list for each piece of each line: words, or
    (word, tag, start, end) with offsets in the str when tagged."""
    text = _text(text)
    tags = {}
    for line_start, line in _lines(text):
        has_nul = "\0" in line
        data = (line.replace("\0", " ") if has_nul else line).encode("utf-8")
        byte_pos, char_pos = 0, line_start
        for offset, piece in _pieces(data):
            raw = _records(piece)
            batch = []
            if tagged:
                for start, length, name in _TAGGED.iter_unpack(raw):
                    start += offset
                    if start != byte_pos:
                        # Bytes the library skipped: a character each.
                        for char in data[byte_pos:start].decode("utf-8"):
                            batch.append((char, "", char_pos, char_pos + 1))
                            char_pos += 1
                    byte_pos = start + length
                    word = data[start:byte_pos].decode("utf-8")
                    end = char_pos + len(word)
                    tag_name = tags.get(name)
                    if tag_name is None:
                        tag_name = tags[name] = name.split(b"\0", 1)[0].decode("utf-8", "replace")
                    batch.append((word, tag_name, char_pos, end))
                    char_pos = end
            else:
                for start, length in _SPAN.iter_unpack(raw):
                    start += offset
                    if start != byte_pos:
                        batch.extend(data[byte_pos:start].decode("utf-8"))
                    byte_pos = start + length
                    batch.append(data[start:byte_pos].decode("utf-8"))
            if byte_pos < offset + len(piece):  # skipped bytes at the end
                rest = data[byte_pos:offset + len(piece)].decode("utf-8")
                byte_pos = offset + len(piece)
                if tagged:
                    for char in rest:
                        batch.append((char, "", char_pos, char_pos + 1))
                        char_pos += 1
                else:
                    batch.extend(rest)
            if has_nul:
                # The text's own characters where NULs were analysed as blanks.
                if tagged:
                    batch = [(text[start:end], name, start, end) for _, name, start, end in batch]
                else:
                    words = []
                    for word in batch:
                        words.append(text[char_pos:char_pos + len(word)])
                        char_pos += len(word)
                    batch = words
            yield batch


def cut(text):
    """The words of a text, one after the other (a generator)."""
    for batch in _batches(text, False):
        yield from batch


def lcut(text):
    """The words of a text as a list."""
    words = []
    for batch in _batches(text, False):
        words += batch
    return words


def tag(text):
    """The (word, tag) pairs of a text, as a list; blanks have the tag ''."""
    return [(word, name) for batch in _batches(text, True) for word, name, _, _ in batch]


def tokenize(text):
    """(word, tag, start, end) for each word (a generator): text[start:end]
    is the word."""
    for batch in _batches(text, True):
        yield from batch


def _c_text(text):
    """A text as the library takes it: UTF-8, NULs as blanks."""
    return _text(text).replace("\0", " ").encode("utf-8")


def _ranked(result):
    """[(word, tag, weight)] of a keyword or new-word list with weights."""
    items = []
    for item in result.decode("utf-8").split("  "):
        if item:
            word, name, weight = item.rsplit("/", 2)
            items.append((word, name, float(weight)))
    return items


def _limited(items, top_k, with_weight):
    if top_k is not None:
        items = items[:max(top_k, 0)]
    return [(word, weight) for word, _, weight in items] if with_weight else \
        [word for word, _, _ in items]


def extract_keywords(text, top_k=20, with_weight=False, allow_pos=()):
    """The text's keywords, best first: at most top_k of them (all when
    None), as (word, weight) pairs with with_weight, only those whose tag
    is in allow_pos when it is given. The text is analysed whole."""
    if top_k is not None and top_k <= 0:
        return []
    lib = _native.ready()
    limit = -1 if top_k is None or allow_pos else top_k - 1
    marks = _native.log_marks()
    result = lib.GetKeyWords(_c_text(text), limit, True)
    if result is None:
        raise _native.failure("extracting keywords", marks)
    items = _ranked(result)
    if allow_pos:
        allowed = set(allow_pos)
        items = [item for item in items if item[1] in allowed]
    return _limited(items, top_k, with_weight)


_collection_lock = threading.Lock()


def new_words(texts, top_k=None, with_weight=False):
    """The new words of a collection of texts (or of one text), best first:
    at most top_k of them (all when None), as (word, weight) pairs with
    with_weight."""
    if isinstance(texts, (str, bytes, bytearray)):
        texts = [texts]
    lib = _native.ready()
    # The collection lives on the library's main instance: one at a time.
    with _collection_lock:
        marks = _native.log_marks()
        if not lib.NWI_Start():
            raise _native.failure("starting a new-word collection", marks)
        for text in texts:
            encoded = _c_text(text)
            if encoded and not lib.NWI_AddMem(encoded):
                raise _native.failure("adding a text to the new-word collection", marks)
        if not lib.NWI_Complete():
            raise _native.failure("finding the new words", marks)
        result = lib.NWI_GetResult(True)
    if result is None:
        raise _native.failure("listing the new words", marks)
    return _limited(_ranked(result), top_k, with_weight)


def fingerprint(text):
    """A 32-bit number identifying the text by its top keywords; 0 when it
    has none."""
    return _native.ready().FingerPrint(_c_text(text))


# A tag longer than this many bytes is refused by the library.
_MAX_TAG_BYTES = 39


def _user_entry(word, tag):
    word = _text(word)
    if not word or any(c.isspace() or c == "\0" for c in word):
        raise ValueError("a user word is not empty and holds no blank: %r" % word)
    if tag is None:
        return word.encode("utf-8")
    tag = _text(tag)
    if not tag or any(c.isspace() or c == "\0" for c in tag) or \
            len(tag.encode("utf-8")) > _MAX_TAG_BYTES:
        raise ValueError("a tag is 1 to %d bytes without blanks: %r" % (_MAX_TAG_BYTES, tag))
    return (word + " " + tag).encode("utf-8")


def add_word(word, tag=None):
    """Adds a word to the user dictionary (tag 'n' when none is given), for
    this process; True when it is new, False when it was there (its tag is
    then replaced)."""
    entry = _user_entry(word, tag)
    return _native.ready().AddUserWord(entry) == 1


def del_word(word):
    """Deletes a word from the user dictionary; True when it was there."""
    entry = _user_entry(word, None)
    return _native.ready().DelUsrWord(entry) >= 0


def load_userdict(f):
    """Adds the words of a UTF-8 user dictionary: a path or an open file,
    one word a line, optionally followed by a count (ignored) and a tag,
    "云计算 5 n" or "云计算 n" or "云计算". Returns how many were new."""
    if hasattr(f, "read"):
        content = f.read()
    else:
        with open(f, "rb") as file:
            content = file.read()
    if isinstance(content, bytes):
        content = content.decode("utf-8")
    added = 0
    for number, line in enumerate(content.lstrip("\ufeff").splitlines(), 1):
        fields = line.split()
        if not fields:
            continue
        word, rest = fields[0], fields[1:]
        if rest and rest[0].isdigit():
            rest = rest[1:]
        if len(rest) > 1:
            raise ValueError("line %d of the user dictionary: %r" % (number, line))
        try:
            added += add_word(word, rest[0] if rest else None)
        except ValueError as error:
            raise ValueError("line %d of the user dictionary: %s" % (number, error)) from None
    return added
