#!/usr/bin/python3
"""Sample pictures made by two stock image tools, and their readings.

  image_samples.py make DIR    writes samples in every variant the loaders
                               take, each with NAME.ref (the stock reading),
                               and DIR/manifest: NAME TOLERANCE per line
  image_samples.py read FILE   writes FILE.pil.ref and FILE.im.ref

A .ref file: width and height as two 32-bit little-endian words, then RGBA.
"""
import os
import struct
import subprocess
import sys

from PIL import Image


def ref(im, path):
    if im.mode == "I":
        im = Image.frombytes("L", im.size, bytes(min(v, 65535) >> 8 for v in im.getdata()))
    if im.mode.startswith("I;16"):
        # Sixteen-bit grey: the high byte of each sample.
        raw = im.tobytes()
        big = im.mode.endswith("B")
        im = Image.frombytes("L", im.size, bytes(raw[i if big else i + 1] for i in range(0, len(raw), 2)))
    im = im.convert("RGBA")
    with open(path, "wb") as f:
        f.write(struct.pack("<II", *im.size))
        f.write(im.tobytes())


def picture(w=37, h=23):
    # Blocks of colour, a ramp and a diagonal: every row differs.
    im = Image.new("RGB", (w, h))
    px = im.load()
    for y in range(h):
        for x in range(w):
            px[x, y] = ((x * 7) % 256, (y * 11) % 256, ((x + y) * 5) % 256) if x < w // 2 else \
                (255 if (x // 4 + y // 3) % 2 else 0, x * 255 // w, 128 if x == y else 30)
    return im


def smooth(w=64, h=48):
    im = Image.new("RGB", (w, h))
    px = im.load()
    for y in range(h):
        for x in range(w):
            px[x, y] = (x * 255 // w, y * 255 // h, 128)
    return im


def convert(src, dst, *args):
    subprocess.run(["convert", src, *args, dst], check=True)


def make(d):
    os.makedirs(d, exist_ok=True)
    manifest = []
    base = picture()
    src = os.path.join(d, "source.png")
    base.save(src)

    def pil(name, im, tol=0, **kw):
        path = os.path.join(d, name)
        im.save(path, **kw)
        ref(Image.open(path), path + ".ref")
        manifest.append((name, tol))

    def im(name, tol=0, *args, source=src):
        path = os.path.join(d, name)
        fmt = args[-1] if args and args[-1].endswith(":") else ""
        convert(source, fmt + path, *[a for a in args if a != fmt])
        ref(Image.open(path), path + ".ref")
        manifest.append((name, tol))

    rgba = base.copy()
    rgba.putalpha(Image.linear_gradient("L").resize(base.size))
    pal = base.quantize(200)
    pal16 = base.quantize(16)
    grey = base.convert("L")
    mono = grey.point(lambda v: 255 if v > 100 else 0).convert("1")
    # PNG: every colour type and depth, palettes, interlace.
    pil("pil_rgb.png", base)
    pil("pil_rgba.png", rgba)
    pil("pil_p8.png", pal)
    pil("pil_p4.png", pal16, bits=4)
    pil("pil_grey.png", grey)
    pil("pil_la.png", grey.convert("LA"))
    pil("pil_mono.png", mono)
    pil("pil_grey16.png", grey.convert("I").point(lambda v: v * 257).convert("I;16"))
    im("im_rgb48.png", 0, "-depth", "16", "PNG48:")
    im("im_rgba64.png", 0, "-alpha", "on", "-depth", "16", "PNG64:")
    im("im_interlaced.png", 0, "-interlace", "PNG")
    im("im_interlaced_p.png", 0, "-interlace", "PNG", "-colors", "50", "PNG8:")
    im("im_grey2.png", 0, "-colorspace", "gray", "-depth", "2")
    im("im_p2.png", 0, "-colors", "4", "-depth", "2", "PNG8:")
    # BMP: bit depths, palettes, run-length coding.
    pil("pil_24.bmp", base)
    pil("pil_8.bmp", pal)
    pil("pil_1.bmp", mono)
    pil("pil_32.bmp", rgba)
    im("im_rle8.bmp", 0, "-colors", "200", "-compress", "RLE", "BMP3:")
    im("im_rle4.bmp", 0, "-colors", "16", "-compress", "RLE", "BMP3:")
    im("im_4.bmp", 0, "-colors", "16", "-compress", "none", "BMP3:")
    im("im_24.bmp", 0, "BMP3:")
    im("im_v5.bmp", 0, "-type", "TrueColor", "BMP:")
    # PCX.
    pil("pil_rgb.pcx", base)
    pil("pil_p8.pcx", pal)
    pil("pil_mono.pcx", mono)
    im("im_rgb.pcx", 0)
    # JPEG: baseline, progressive, grey.
    sm = smooth()
    smooth_src = os.path.join(d, "smooth.png")
    sm.save(smooth_src)
    pil("pil_base.jpg", sm, 12, quality=90)
    pil("pil_prog.jpg", sm, 12, quality=90, progressive=True)
    pil("pil_grey.jpg", sm.convert("L"), 12, quality=90)
    im("im_prog.jpg", 12, "-quality", "90", "-interlace", "JPEG", source=smooth_src)
    im("im_base.jpg", 12, "-quality", "90", source=smooth_src)
    # Icons: a bitmap inside, and a PNG inside.
    im("im_icon.ico", 0, "-resize", "32x32!", "-alpha", "off")
    pil("pil_icon.ico", base.resize((32, 32)), sizes=[(32, 32)])
    with open(os.path.join(d, "manifest"), "w") as f:
        for name, tol in manifest:
            f.write(f"{name} {tol}\n")


def read(path):
    ref(Image.open(path), path + ".pil.ref")
    out = subprocess.run(["convert", path + "[0]", "-depth", "8", "rgba:-"], check=True, capture_output=True).stdout
    w, h = Image.open(path).size
    with open(path + ".im.ref", "wb") as f:
        f.write(struct.pack("<II", w, h))
        f.write(out)


if __name__ == "__main__":
    if sys.argv[1] == "make":
        make(sys.argv[2])
    else:
        read(sys.argv[2])
