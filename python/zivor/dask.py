"""Analysing collections of documents on a Dask cluster.

    import dask.bag as db
    from dask.distributed import Client
    import zivor.dask

    client = Client("tcp://scheduler:8786")
    zivor.dask.register(client)       # optional: initialise every worker now
    docs = db.read_text("/shared/news/*.txt").map(str.rstrip)  # a document a line
    words = zivor.dask.cut_bag(docs)  # a bag of word lists
    words.take(3)

Every worker process initialises ZIVOR once, on its first task (or when
register() runs), and its threads then analyse in parallel. The package
and its library must be installed on every worker machine.

Work is done a partition at a time, so per-task overheads are paid once per
partition rather than once per document.
"""

import zivor

try:
    from distributed.diagnostics.plugin import WorkerPlugin as _PluginBase
except ImportError:  # Dask without distributed: no worker plugins
    _PluginBase = object


def _prepare(user_words):
    zivor._native.ready()
    if user_words:
        _apply_user_words(user_words)


# The user words each worker process has been given, so that a partition
# does not add them again.
_applied = set()


def _apply_user_words(user_words):
    entries = tuple(user_words)
    if entries in _applied:
        return
    for entry in entries:
        word, _, name = entry.partition(" ")
        zivor.add_word(word, name.strip() or None)
    _applied.add(entries)


def _cut_partition(texts, user_words):
    _prepare(user_words)
    return [zivor.lcut(text) for text in texts]


def _tag_partition(texts, user_words):
    _prepare(user_words)
    return [zivor.tag(text) for text in texts]


def _keywords_partition(texts, top_k, with_weight, allow_pos, user_words):
    _prepare(user_words)
    return [zivor.extract_keywords(text, top_k, with_weight, allow_pos) for text in texts]


def _fingerprint_partition(texts, user_words):
    _prepare(user_words)
    return [zivor.fingerprint(text) for text in texts]


def _user_words(user_words):
    """User words as "WORD [TAG]" strings, checked on the client."""
    entries = []
    for entry in user_words or ():
        if isinstance(entry, (tuple, list)):
            entry = " ".join(entry)
        word, _, name = entry.strip().partition(" ")
        zivor._user_entry(word, name.strip() or None)
        entries.append(entry.strip())
    return tuple(entries)


def cut_bag(bag, user_words=None):
    """A bag of texts -> a bag of word lists (zivor.lcut of each text).
    user_words ("WORD TAG" strings or (word, tag) pairs) are added to each
    worker's user dictionary first."""
    return bag.map_partitions(_cut_partition, _user_words(user_words))


def tag_bag(bag, user_words=None):
    """A bag of texts -> a bag of [(word, tag)] lists (zivor.tag)."""
    return bag.map_partitions(_tag_partition, _user_words(user_words))


def keywords_bag(bag, top_k=20, with_weight=False, allow_pos=(), user_words=None):
    """A bag of texts -> a bag of keyword lists (zivor.extract_keywords)."""
    return bag.map_partitions(_keywords_partition, top_k, with_weight, tuple(allow_pos),
                              _user_words(user_words))


def fingerprint_bag(bag, user_words=None):
    """A bag of texts -> a bag of fingerprints (zivor.fingerprint)."""
    return bag.map_partitions(_fingerprint_partition, _user_words(user_words))


def _series_partition(series, kind, user_words):
    analyse = {"cut": _cut_partition, "tag": _tag_partition,
               "fingerprint": _fingerprint_partition}[kind]
    return type(series)(analyse(series.tolist(), user_words), index=series.index,
                        name=series.name, dtype="object")


def analyse_series(series, kind="cut", user_words=None):
    """A Dask dataframe column of texts -> a column of the same index holding
    each text's word lists (kind "cut"), [(word, tag)] lists ("tag") or
    fingerprints ("fingerprint"):

        df["words"] = zivor.dask.analyse_series(df["body"])
    """
    if kind not in ("cut", "tag", "fingerprint"):
        raise ValueError("kind is 'cut', 'tag' or 'fingerprint', not %r" % (kind,))
    return series.map_partitions(_series_partition, kind, _user_words(user_words),
                                 meta=(series.name, "object"))


class _Initialiser(_PluginBase):
    """Initialises ZIVOR in every worker process, those joining later too."""

    name = "zivor"

    def __init__(self, data_dir, tag_set, user_words):
        self.data_dir, self.tag_set, self.user_words = data_dir, tag_set, user_words

    def setup(self, worker=None):
        zivor.initialize(self.data_dir, self.tag_set)
        if self.user_words:
            _apply_user_words(self.user_words)


def register(client, data_dir=None, tag_set=0, user_words=None):
    """Initialises ZIVOR on every worker of the client's cluster now, and on
    workers that join later, with the given data directory (as seen from the
    workers), tag set and user words; an initialisation failure is raised
    here rather than on the first task. Returns zivor.status() of each
    worker, by address."""
    plugin = _Initialiser(data_dir, tag_set, _user_words(user_words))
    client.register_worker_plugin(plugin, name="zivor")
    return client.run(_worker_status)


def _worker_status():
    zivor._native.ready()
    return zivor.status()
