"""The shared library: where it is, its prototypes, and initialisation.

The library is found, in this order, at
  * $ZIVOR_LIBRARY (the path of libZIVOR.so);
  * libZIVOR.so inside this package (bundled by `pip install`);
  * the install prefixes (sys.prefix, /usr/local, /usr): lib/libZIVOR.so.0
    and lib/<multiarch>/libZIVOR.so.0, as `cmake --install` lays them out;
  * wherever the dynamic linker's cache has it.

The data (the directory holding Data/) is the one given to initialize(), else
  * $ZIVOR_DATA_DIR;
  * Data/ inside this package (bundled by `pip install`);
  * share/zivor next to the library's lib/ directory, then under the install
    prefixes;
  * the source tree this package lies in (python/zivor inside the project).
"""

import atexit
import ctypes
import ctypes.util
import os
import shutil
import sys
import sysconfig
import tempfile
import threading
import time

_HERE = os.path.dirname(os.path.abspath(__file__))
_LIBRARY_NAMES = ("libZIVOR.so.0", "libZIVOR.so")

# Encoding code of every text passed to and returned by the library: UTF-8.
_UTF8 = 1

# Tag sets accepted by initialize(): ZIVOR_SetPOSmap's codes.
TAG_SETS = {0: "configured", 1: "configured, first level", 2: "PKU", 3: "PKU, first level"}


class ZivorError(RuntimeError):
    """The library cannot be loaded or initialised, or a call failed."""


def _prefixes():
    seen = []
    for prefix in (sys.prefix, sys.base_prefix, "/usr/local", "/usr"):
        if prefix not in seen:
            seen.append(prefix)
    return seen


def _library_candidates():
    yield from (os.path.join(_HERE, name) for name in _LIBRARY_NAMES)
    multiarch = sysconfig.get_config_var("MULTIARCH")
    for prefix in _prefixes():
        for libdir in ("lib", os.path.join("lib", multiarch) if multiarch else None, "lib64"):
            if libdir:
                yield from (os.path.join(prefix, libdir, name) for name in _LIBRARY_NAMES)


def find_library():
    """The path of the shared library (see the module's notes)."""
    explicit = os.environ.get("ZIVOR_LIBRARY")
    if explicit:
        if not os.path.isfile(explicit):
            raise ZivorError("ZIVOR_LIBRARY names no file: %s" % explicit)
        return explicit
    for path in _library_candidates():
        if os.path.isfile(path):
            return path
    found = ctypes.util.find_library("ZIVOR")
    if found:
        return found
    raise ZivorError(
        "libZIVOR.so not found: install the package with pip (which bundles it), "
        "install the library with `cmake --install`, or set ZIVOR_LIBRARY")


def _holds_data(directory):
    return os.path.isfile(os.path.join(directory, "Data", "Configure.xml"))


def _data_candidates(library_path):
    yield _HERE
    if os.path.isabs(library_path):
        for path in (library_path, os.path.realpath(library_path)):
            for up in (os.pardir, os.path.join(os.pardir, os.pardir)):  # lib/, lib/<multiarch>/
                yield os.path.normpath(os.path.join(os.path.dirname(path), up, "share", "zivor"))
    for prefix in _prefixes():
        yield os.path.join(prefix, "share", "zivor")
    yield os.path.normpath(os.path.join(_HERE, os.pardir, os.pardir))


def find_data_dir(library_path, explicit=None):
    """The directory holding Data/ (see the module's notes)."""
    given = explicit or os.environ.get("ZIVOR_DATA_DIR")
    if given:
        given = os.path.abspath(given)
        # The Data directory itself is accepted as well as its parent.
        if not _holds_data(given) and os.path.basename(given.rstrip("/")) == "Data" \
                and os.path.isfile(os.path.join(given, "Configure.xml")):
            given = os.path.dirname(given.rstrip("/"))
        if not _holds_data(given):
            raise ZivorError("no Data/Configure.xml under the data directory %s" % given)
        return given
    for directory in _data_candidates(library_path):
        if _holds_data(directory):
            return directory
    raise ZivorError("no data directory found (a directory holding Data/Configure.xml): "
                     "pass initialize(data_dir=...) or set ZIVOR_DATA_DIR")


class _Prototypes:
    """The foreign functions with their argument and result types."""

    def __init__(self, path):
        try:
            lib = ctypes.CDLL(path)
        except OSError as error:
            raise ZivorError("cannot load %s: %s" % (path, error)) from error
        self.path = path
        c_char_p, c_int, c_bool, c_void_p = ctypes.c_char_p, ctypes.c_int, ctypes.c_bool, ctypes.c_void_p
        # restype c_char_p copies the returned text into a bytes object before
        # control returns to Python, so a library-owned buffer is never read
        # after the thread's next call could have reused it.
        signatures = {
            "ZIVOR_Init": ([c_char_p, c_int], c_bool),
            "ZIVOR_Exit": ([], c_bool),
            "ZIVOR_ParagraphProcess": ([c_char_p, c_int], c_char_p),
            "ZIVOR_ParagraphProcessA": ([c_char_p, ctypes.POINTER(c_int), c_bool], c_void_p),
            "ZIVOR_GetSafeCut": ([c_void_p, c_int], c_int),
            "ZIVOR_SetPOSmap": ([c_int], c_int),
            "ZIVOR_GetKeyWords": ([c_char_p, c_int, c_bool], c_char_p),
            "ZIVOR_FingerPrint": ([c_char_p], ctypes.c_ulong),
            "ZIVOR_NWI_Start": ([], c_int),
            "ZIVOR_NWI_AddMem": ([c_char_p], c_int),
            "ZIVOR_NWI_Complete": ([], c_int),
            "ZIVOR_NWI_GetResult": ([c_bool], c_char_p),
            "ZIVOR_AddUserWord": ([c_char_p], c_int),
            "ZIVOR_DelUsrWord": ([c_char_p], c_int),
        }
        for name, (argtypes, restype) in signatures.items():
            try:
                function = getattr(lib, name)
            except AttributeError as error:
                raise ZivorError("%s lacks %s" % (path, name)) from error
            function.argtypes = argtypes
            function.restype = restype
            setattr(self, name[len("ZIVOR_"):], function)


def _log_path(when):
    # The library logs to YYYYmmdd.log (local date) in the working directory.
    return os.path.join(os.getcwd(), time.strftime("%Y%m%d.log", time.localtime(when)))


def _log_size(path):
    try:
        return os.path.getsize(path)
    except OSError:
        return 0


def log_lines_since(marks):
    """The lines the library logged since `marks` (from log_marks())."""
    lines = []
    for path in sorted({_log_path(time.time()), *marks}):
        try:
            with open(path, "rb") as log:
                log.seek(marks.get(path, 0))
                lines += log.read().decode("utf-8", "replace").splitlines()
        except OSError:
            continue
    return [line.strip() for line in lines if line.strip()]


def log_marks():
    """Where the day's log ends now, to read what a failing call adds."""
    path = _log_path(time.time())
    return {path: _log_size(path)}


def failure(call, marks=None):
    """The exception for a failed call, with the reason the library logged:
    what it logged since `marks`, or without them the day's last lines."""
    reason = log_lines_since(marks if marks is not None else {})
    detail = "; ".join(reason[-4:]) if reason else \
        "no reason logged (the library logs to YYYYmmdd.log in the working directory)"
    return ZivorError("%s failed: %s" % (call, detail))


def _coarse_copy(directory):
    """A private directory whose Data links to the files of directory/Data,
    with the coarse-grained granularity dictionary switched on in its copy
    of Configure.xml (the first element of a name is the one that counts).
    It is removed when the process ends."""
    data = os.path.join(directory, "Data")
    if not os.path.isfile(os.path.join(data, "GranDict.pdat")):
        raise ZivorError("no coarse-grained dictionary %s (zivor-data coarse builds it)"
                         % os.path.join(data, "GranDict.pdat"))
    copy = tempfile.mkdtemp(prefix="zivor-coarse-")
    atexit.register(shutil.rmtree, copy, True)
    os.mkdir(os.path.join(copy, "Data"))
    for name in os.listdir(data):
        if name != "Configure.xml":
            os.symlink(os.path.join(data, name), os.path.join(copy, "Data", name))
    with open(os.path.join(data, "Configure.xml"), "rb") as source:
        configuration = source.read()
    with open(os.path.join(copy, "Data", "Configure.xml"), "wb") as target:
        target.write(b"<GranularityContorl>on</GranularityContorl>\n" + configuration)
    return copy


class _State:
    lock = threading.Lock()
    lib = None          # _Prototypes once initialised
    data_dir = None
    tag_set = None
    coarse = None
    init_calls = 0      # successful ZIVOR_Init calls of this process


def ready():
    """The initialised library, initialising it with the defaults if needed."""
    lib = _State.lib
    return lib if lib is not None else initialize()


def initialize(data_dir=None, tag_set=0, coarse=False):
    """Loads and initialises the library once per process (thread-safe).

    data_dir is the directory holding Data/; tag_set picks the tag names of
    the results (see TAG_SETS); coarse=True turns the data's coarse-grained
    dictionary on (organisations, places and long compounds as one word, as
    `zivor --coarse` does). A second call with other arguments raises
    ZivorError: the library cannot be initialised twice in a process.
    """
    if tag_set not in TAG_SETS:
        raise ValueError("tag_set must be one of %s" % sorted(TAG_SETS))
    with _State.lock:
        if _State.lib is not None:
            wanted = find_data_dir(_State.lib.path, data_dir) if data_dir else _State.data_dir
            if (wanted != _State.data_dir or tag_set != _State.tag_set
                    or bool(coarse) != _State.coarse):
                raise ZivorError("ZIVOR is already initialised with data %s, tag set %d%s"
                                 % (_State.data_dir, _State.tag_set,
                                    ", coarse" if _State.coarse else ""))
            return _State.lib
        lib = _Prototypes(find_library())
        directory = find_data_dir(lib.path, data_dir)
        loaded = _coarse_copy(directory) if coarse else directory
        marks = log_marks()
        if not lib.Init(os.fsencode(loaded), _UTF8):
            raise failure("initialising ZIVOR with the data of %s" % directory, marks)
        lib.SetPOSmap(tag_set)
        _State.init_calls += 1
        _State.data_dir, _State.tag_set, _State.coarse = directory, tag_set, bool(coarse)
        # Published last: the other calls never see a library still loading.
        _State.lib = lib
        return lib


def status():
    """(library path, data directory, tag set, initialisations) of this process."""
    lib = _State.lib
    return (lib.path if lib else None, _State.data_dir, _State.tag_set, _State.init_calls)
