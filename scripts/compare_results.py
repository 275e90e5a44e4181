"""Holds the results of builds against those of the first: arguments are build folders with results-<target> in them."""
import argparse
import collections
import sys

parser = argparse.ArgumentParser(description=__doc__)
parser.add_argument("--targets", nargs="+", default=["baseline", "avx2", "avx512"])
parser.add_argument("builds", nargs="+")


def read(path):
    values = collections.OrderedDict()
    with open(path, encoding="ascii") as lines:
        for line in lines:
            name, value = line.split()
            values.setdefault(name, []).append(float.fromhex(value))
    return values


arguments = parser.parse_args()
first = read(f"{arguments.builds[0]}/results-{arguments.targets[0]}")
failed = False
for build in arguments.builds:
    for target in arguments.targets:
        results = read(f"{build}/results-{target}")
        worst, agrees = 0.0, True
        for name, reference in first.items():
            largest = max(map(abs, reference))
            difference = max(abs(a - b) for a, b in zip(reference, results[name], strict=True)) / largest
            allowed = 0.0 if name == "solver" else 1e-13
            worst = max(worst, difference)
            if not difference <= allowed:
                agrees = False
                print(f"{build} {target} {name}: off by {difference:.2e} of the maximum")
        if agrees:
            print(f"{build} {target}: solver to the bit, fields within {worst:.1e}")
        failed = failed or not agrees
sys.exit(failed)
