"""A line through points by least squares, on threads, with items of a `ling` list as the points."""

import concurrent.futures

import numpy
from numpy.lib.stride_tricks import sliding_window_view

import ling

points = ling.List([2.0 * x + 1 for x in range(100)])
values = numpy.array(list(points))
slope, offset = numpy.polyfit(numpy.arange(100), values, 1)
assert abs(slope - 2) < 1e-9 and abs(offset - 1) < 1e-9

with concurrent.futures.ThreadPoolExecutor(4) as pool:
    means = list(pool.map(numpy.mean, sliding_window_view(values, 10)))
assert numpy.allclose(means, values[:-9] + 9)

generator = numpy.random.default_rng(1)
matrix = generator.random((50, 50)) + 50 * numpy.eye(50)
assert numpy.allclose(numpy.linalg.inv(matrix) @ matrix, numpy.eye(50))

kept = ling.Map({"points": [values]})
assert kept["points"][0] is values
print("numpy", len(means))
