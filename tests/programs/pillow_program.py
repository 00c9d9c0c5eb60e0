"""A picture drawn, saved, read again and changed; its bytes go through the host."""

import io

from PIL import Image, ImageDraw, ImageFilter

import ling

picture = Image.new("RGB", (64, 64), "white")
ImageDraw.Draw(picture).ellipse((16, 16, 48, 48), fill=(200, 0, 0))
for form in ("PNG", "JPEG", "GIF"):
    file = io.BytesIO()
    picture.save(file, form)
    kept = ling.List([file.getvalue()])
    again = Image.open(io.BytesIO(kept[0]))
    assert again.size == (64, 64) and again.format == form
blurred = picture.filter(ImageFilter.GaussianBlur(4)).resize((32, 32))
assert blurred.getpixel((16, 16))[0] > blurred.getpixel((16, 16))[1]
print("pillow", len(blurred.tobytes()))
