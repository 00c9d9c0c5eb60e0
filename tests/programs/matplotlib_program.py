"""A picture, drawn without a screen, as PNG and as SVG, of items of a `ling` list."""

import io

import matplotlib

matplotlib.use("Agg")

from matplotlib import pyplot  # noqa: E402

import ling  # noqa: E402

figure, axes = pyplot.subplots()
axes.plot(list(ling.List([1, 4, 9, 16])), label="squares")
axes.set_title("\N{GREEK SMALL LETTER ALPHA} of " + ling.String("x"))
axes.legend()
for form, start in (("png", b"\x89PNG"), ("svg", b"<?xml")):
    picture = io.BytesIO()
    figure.savefig(picture, format=form)
    assert picture.getvalue().startswith(start)
print("matplotlib", len(axes.lines))
