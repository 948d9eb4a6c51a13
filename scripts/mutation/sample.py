"""Chooses some of all mutants, from a seed, so that every file is met."""

import hashlib
import itertools
from collections import defaultdict

EVEN_PART = 0.25  # of the sample, spread over the files evenly; the rest goes by their size


def choose(mutants, count, seed):
    """`count` of the mutants, or all if there are fewer.

    The size of a file is the number of its lines that a mutant begins in.
    """
    queues = defaultdict(list)
    for mutant in mutants:
        queues[mutant.file].append(mutant)
    files = sorted(queues)
    for file in files:
        queues[file] = in_mixed_order(queues[file], seed)
    weights = {file: len({mutant.line for mutant in queues[file]}) for file in files}
    wanted = min(count, len(mutants))
    whole = sum(weights.values())
    shares = {
        file: wanted * (EVEN_PART / len(files) + (1 - EVEN_PART) * weights[file] / whole)
        for file in files
    }
    # One at a time to the file that lags most behind its share.
    chosen = []
    taken = dict.fromkeys(files, 0)
    for _ in range(wanted):
        left = [file for file in files if taken[file] < len(queues[file])]
        file = min(left, key=lambda name: ((taken[name] + 0.5) / shares[name], name))
        chosen.append(queues[file][taken[file]])
        taken[file] += 1
    return sorted(chosen, key=lambda mutant: (mutant.file, mutant.start, mutant.end, mutant.name))


def in_mixed_order(mutants, seed):
    """In random order, with the kinds in turn, for of some kinds there are many more."""
    kinds = defaultdict(list)
    for mutant in sorted(mutants, key=lambda mutant: rank(seed, mutant.name)):
        kinds[mutant.kind].append(mutant)
    turns = sorted(kinds, key=lambda kind: rank(seed, mutants[0].file, kind))
    rounds = itertools.zip_longest(*(kinds[kind] for kind in turns))
    return [mutant for turn in rounds for mutant in turn if mutant is not None]


def rank(*words):
    """A random number that these words alone decide: new mutants do not move the others."""
    return hashlib.sha256(repr(words).encode()).digest()
