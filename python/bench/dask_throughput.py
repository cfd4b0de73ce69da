"""Documents per second of zivor.dask.cut_bag on a local cluster of two
worker processes, against zivor.lcut in one process, with the results
compared.

    /usr/bin/python3 python/bench/dask_throughput.py RAW.txt [COPIES] [SCHEDULER]

Each line of RAW.txt is a document; COPIES (default 4) copies of them make
the collection. With SCHEDULER (an address such as tcp://host:8786) the
bag runs on that cluster instead of a local one. Timings exclude starting
the cluster and the workers' initialisation (zivor.dask.register).
"""

import logging
import os
import sys
import time

import dask.bag as db
from dask.distributed import Client, LocalCluster

import zivor
import zivor.dask


def main():
    path = sys.argv[1]
    copies = int(sys.argv[2]) if len(sys.argv) > 2 else 4
    with open(path, encoding="utf-8") as f:
        documents = [line.rstrip("\n") for line in f] * copies
    print("%d documents, %d characters; load %s" % (
        len(documents), sum(map(len, documents)),
        " ".join("%.2f" % x for x in os.getloadavg())))

    zivor.lcut(documents[0])
    start = time.perf_counter()
    local = [zivor.lcut(d) for d in documents]
    seconds = time.perf_counter() - start
    print("one process:   %6.2f s  %8.0f documents/s" % (seconds, len(documents) / seconds))

    if len(sys.argv) > 3:
        client, cluster = Client(sys.argv[3]), None
    else:
        cluster = LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                               dashboard_address=None, silence_logs=logging.ERROR)
        client = Client(cluster)
    with client:
        workers = zivor.dask.register(client)
        bag = db.from_sequence(documents, npartitions=4 * len(workers))
        # the documents are sent to the workers first, so that the timing is
        # that of the analysis and the return of the words
        bag = client.persist(bag)
        start = time.perf_counter()
        remote = zivor.dask.cut_bag(bag).compute()
        seconds = time.perf_counter() - start
        print("%d workers:     %6.2f s  %8.0f documents/s" %
              (len(workers), seconds, len(documents) / seconds))
        print("results identical:", remote == local)
    if cluster is not None:
        cluster.close()


if __name__ == "__main__":
    main()
