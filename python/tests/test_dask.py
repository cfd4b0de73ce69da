"""zivor.dask on a local cluster of two worker processes: the results are
those of the local process, and each worker initialises ZIVOR once."""

import logging
import os

import pytest

from conftest import make_documents

import zivor
import zivor.dask

db = pytest.importorskip("dask.bag")
dd = pytest.importorskip("dask.dataframe")
pd = pytest.importorskip("pandas")
distributed = pytest.importorskip("distributed")


@pytest.fixture(scope="module")
def client():
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=2, processes=True,
                                       dashboard_address=None, silence_logs=logging.ERROR)
    with cluster, distributed.Client(cluster) as client:
        yield client


def test_bags_give_the_local_results(client):
    documents = make_documents(3000, seed=5)
    bag = db.from_sequence(documents, npartitions=12)
    assert zivor.dask.cut_bag(bag).compute() == [zivor.lcut(d) for d in documents]
    assert zivor.dask.tag_bag(bag).compute() == [zivor.tag(d) for d in documents]
    assert zivor.dask.keywords_bag(bag, 5, with_weight=True).compute() == \
        [zivor.extract_keywords(d, 5, with_weight=True) for d in documents]
    assert zivor.dask.fingerprint_bag(bag).compute() == [zivor.fingerprint(d) for d in documents]

    pids = client.run(os.getpid)
    assert len(set(pids.values())) == 2 and os.getpid() not in pids.values()
    # each worker initialised once, and registering initialises nothing again
    for status in (client.run(zivor.status), zivor.dask.register(client)):
        assert [s[2:] for s in status.values()] == [(0, 1), (0, 1)]


def test_dataframe_column(client):
    documents = make_documents(600, seed=6)
    frame = pd.DataFrame({"body": documents}, index=range(3000, 3000 + 3 * len(documents), 3))
    result = zivor.dask.analyse_series(dd.from_pandas(frame, npartitions=5)["body"], "tag")
    result = result.compute()
    assert list(result.index) == list(frame.index)
    assert result.tolist() == [zivor.tag(d) for d in documents]


def test_user_words_reach_the_workers(client):
    text = "冰雪运动进校园活动开始了"
    bag = db.from_sequence([text] * 8, npartitions=4)
    words = zivor.dask.cut_bag(bag, user_words=[("进校园活动", "nz")]).compute()
    assert all("进校园活动" in w for w in words)
    assert "进校园活动" not in zivor.lcut(text)  # the client's own dictionary is left alone
    assert all(("进校园活动", "nz") in pairs for pairs in zivor.dask.tag_bag(bag).compute())
    with pytest.raises(ValueError):
        zivor.dask.cut_bag(bag, user_words=["进校 园 活动 nz"])
