"""Keywords, new words and fingerprints."""

import threading

import zivor


def test_keywords(documents):
    long_documents = [d for d in documents if len(d) > 300][:40]
    places = 0
    for document in long_documents:
        every = zivor.extract_keywords(document, None, with_weight=True)
        assert zivor.extract_keywords(document, 10) == [w for w, _ in every[:10]]
        assert zivor.extract_keywords(document, 0) == []
        assert all(word in document for word, _ in every)
        weights = [weight for _, weight in every]
        assert weights == sorted(weights, reverse=True)
        chosen = zivor.extract_keywords(document, 5, allow_pos=("ns",))
        assert len(chosen) <= 5
        assert set(chosen) <= {word for word, tag in zivor.tag(document) if tag == "ns"}
        places += len(chosen)
    assert places > 0
    assert zivor.extract_keywords("   ") == []


def test_new_words(documents):
    words = zivor.new_words(documents, with_weight=True)
    weights = [weight for _, weight in words]
    assert words and weights == sorted(weights, reverse=True)
    everything = "\n".join(documents)
    assert all(word in everything for word, _ in words)
    assert zivor.new_words(iter(documents), top_k=3) == [w for w, _ in words[:3]]
    text = "".join(documents[:20])
    assert zivor.new_words(text) == zivor.new_words([text])


def test_new_words_from_two_threads(articles):
    """The collection lives on one library instance: concurrent calls take
    turns and each gets the new words of its own texts."""
    halves = [articles[::2] * 5, articles[1::2] * 5]
    expected = [zivor.new_words(half) for half in halves]
    assert expected[0] != expected[1]
    results = {}
    barrier = threading.Barrier(2)

    def work(index):
        barrier.wait()
        results[index] = [zivor.new_words(halves[index]) for _ in range(3)]

    threads = [threading.Thread(target=work, args=(i,)) for i in range(2)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert [results[0], results[1]] == [[expected[0]] * 3, [expected[1]] * 3]


def test_fingerprints(documents, articles):
    prints = [zivor.fingerprint(text) for text in documents]
    assert all(0 <= p < 2 ** 32 for p in prints)
    # 0 exactly for the texts without keywords
    assert [p == 0 for p in prints] == [zivor.extract_keywords(t) == [] for t in documents]
    article_prints = {zivor.fingerprint(text) for text in articles}
    assert 0 not in article_prints and len(article_prints) == len(articles)
