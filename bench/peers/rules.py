"""Rules with one item on the right by a program of the Python package index, as a process of its own.

rules.py PEER FILE COUNT PERCENT        prints the number of rules of at most 10 items in at least COUNT transactions
                                        that hold in at least PERCENT of 100 cases
rules.py PEER FILE COUNT PERCENT rules  prints each: left items ascending, "=>", the right item, a tab, the count of both

PEER: pyfim:ALGORITHM or efficient-apriori.
"""
import sys

LONGEST = 10


def read(path):
    with open(path) as file:
        return [[int(item) for item in line.split()] for line in file]


def pyfim(algorithm, path, count, percent):
    import fim
    # A negative support is a count; mode "o" counts a rule by all its items; report "a" asks for that count.
    return [(sorted(body), head, both) for head, body, both in
            getattr(fim, algorithm)(read(path), target='r', supp=-count, conf=percent, zmin=2, zmax=LONGEST, report='a', mode='o')]


def efficient_apriori(path, count, percent):
    from efficient_apriori import apriori
    rows = [tuple(row) for row in read(path)]
    _, rules = apriori(rows, min_support=(count - 0.5) / len(rows), min_confidence=percent / 100, max_length=LONGEST)
    return [(sorted(rule.lhs), rule.rhs[0], rule.count_full) for rule in rules if len(rule.rhs) == 1]


def main():
    peer, path, count, percent = sys.argv[1], sys.argv[2], int(sys.argv[3]), float(sys.argv[4])
    if peer.startswith('pyfim:'):
        found = pyfim(peer[6:], path, count, percent)
    else:
        found = efficient_apriori(path, count, percent)
    if len(sys.argv) > 5:
        for left, right, both in found:
            print(*left, '=>', right, end=f'\t{both}\n')
    else:
        print(len(found))


main()
