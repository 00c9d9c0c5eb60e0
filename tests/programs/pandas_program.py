"""Sums of the orders by region, of a file and of `ling` maps."""

import sys

import pandas

import ling

orders = pandas.read_csv(sys.argv[1])
by_region = orders.groupby("region").size()
assert by_region.sum() == len(orders.dropna(subset="region")) > 4000

rows = ling.List([ling.Map({"name": name, "count": count}) for name, count in by_region.items()])
frame = pandas.DataFrame(ling.python.to_python(rows))
assert frame["count"].sum() == by_region.sum()
assert frame.sort_values("count").iloc[-1]["name"] == by_region.idxmax()
assert pandas.Series(list(ling.List([1, 2, 3]))).rolling(2).sum().tolist()[1:] == [3, 5]
print("pandas", len(frame) > 1)
