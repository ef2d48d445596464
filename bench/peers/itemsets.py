"""Frequent itemsets by a program of the Python package index, as a process of its own.

itemsets.py PEER FILE COUNT        prints the number of itemsets of at most 10 items in at least COUNT transactions
itemsets.py PEER FILE COUNT sets   prints each: its items ascending, a tab, its count

PEER: pyfim:ALGORITHM, mlxtend or efficient-apriori. Thresholds are counts wherever the peer takes them.
"""
import sys

LONGEST = 10


def read(path):
    with open(path) as file:
        return [[int(item) for item in line.split()] for line in file]


def pyfim(algorithm, path, count):
    import fim
    # A negative support is a count; report "a" asks for absolute counts.
    return [(sorted(s[0]), s[1]) for s in
            getattr(fim, algorithm)(read(path), supp=-count, zmin=1, zmax=LONGEST, report='a')]


def mlxtend(path, count):
    import pandas
    from mlxtend.frequent_patterns import fpgrowth
    from mlxtend.preprocessing import TransactionEncoder
    rows = read(path)
    encoder = TransactionEncoder()
    table = pandas.DataFrame.sparse.from_spmatrix(encoder.fit(rows).transform(rows, sparse=True),
                                                  columns=[str(item) for item in encoder.columns_])
    found = fpgrowth(table, min_support=(count - 0.5) / len(rows), max_len=LONGEST)
    return [(sorted(int(encoder.columns_[i]) for i in s), round(support * len(rows)))
            for support, s in zip(found['support'], found['itemsets'])]


def efficient_apriori(path, count):
    from efficient_apriori import itemsets_from_transactions
    rows = [tuple(row) for row in read(path)]
    found, _ = itemsets_from_transactions(rows, min_support=(count - 0.5) / len(rows), max_length=LONGEST)
    return [(sorted(s), n) for level in found.values() for s, n in level.items()]


def main():
    peer, path, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    if peer.startswith('pyfim:'):
        found = pyfim(peer[6:], path, count)
    else:
        found = {'mlxtend': mlxtend, 'efficient-apriori': efficient_apriori}[peer](path, count)
    if len(sys.argv) > 4:
        for items, n in found:
            print(*items, end=f'\t{n}\n')
    else:
        print(len(found))


main()
