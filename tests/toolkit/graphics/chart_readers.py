"""Reads the chart's DXF and CGM files back and draws them as SVG for a look.

  chart_readers.py dxf FILE OUT.svg   audit by ezdxf, then draw its entities
  chart_readers.py cgm FILE OUT.svg   walk the binary elements, check their
                                      structure, then draw the primitives
Exits non-zero with a message on the first fault.
"""
import struct
import sys


def fail(msg):
    print(msg)
    sys.exit(1)


def svg_doc(width, height, body):
    return ('<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d">\n'
            '<rect width="100%%" height="100%%" fill="white"/>\n%s\n</svg>\n' % (width, height, "\n".join(body)))


def dxf(path, out):
    import ezdxf
    doc = ezdxf.readfile(path)
    auditor = doc.audit()
    if auditor.has_errors:
        fail("DXF audit: %s" % "; ".join(e.message for e in auditor.errors[:5]))
    ext = doc.header["$EXTMAX"]
    scale = 72.0
    w, h = int(ext[0] * scale), int(ext[1] * scale)

    def p(x, y):
        return "%.2f,%.2f" % (x * scale, h - y * scale)

    def colour(e):
        from ezdxf import colors
        r, g, b = colors.aci2rgb(e.dxf.color) if e.dxf.color not in (0, 7, 256) else (0, 0, 0)
        return "#%02x%02x%02x" % (r, g, b)

    body = []
    kinds = set()
    for e in doc.modelspace():
        t = e.dxftype()
        kinds.add(t)
        c = colour(e)
        if t == "LINE":
            body.append('<polyline points="%s %s" stroke="%s" fill="none"/>' % (p(e.dxf.start.x, e.dxf.start.y), p(e.dxf.end.x, e.dxf.end.y), c))
        elif t == "LWPOLYLINE":
            pts = " ".join(p(x, y) for x, y in e.get_points("xy"))
            tag = "polygon" if e.closed else "polyline"
            body.append('<%s points="%s" stroke="%s" fill="none"/>' % (tag, pts, c))
        elif t == "SOLID":
            v = [e.dxf.vtx0, e.dxf.vtx1, e.dxf.vtx3, e.dxf.vtx2]
            body.append('<polygon points="%s" fill="%s" stroke="%s" stroke-width="0.3"/>' % (" ".join(p(q[0], q[1]) for q in v), c, c))
        elif t == "CIRCLE":
            x, y = e.dxf.center.x, e.dxf.center.y
            body.append('<circle cx="%.2f" cy="%.2f" r="%.2f" stroke="%s" fill="none"/>' % (x * scale, h - y * scale, e.dxf.radius * scale, c))
        elif t == "ARC":
            import math
            x, y, r = e.dxf.center[0], e.dxf.center[1], e.dxf.radius
            a0, a1 = math.radians(e.dxf.start_angle), math.radians(e.dxf.end_angle)
            pts = " ".join(p(x + r * math.cos(a0 + (a1 - a0) * i / 40), y + r * math.sin(a0 + (a1 - a0) * i / 40)) for i in range(41))
            body.append('<polyline points="%s" stroke="%s" fill="none"/>' % (pts, c))
        elif t == "TEXT":
            x, y = e.dxf.insert.x, e.dxf.insert.y
            body.append('<text transform="translate(%s) rotate(%d)" font-size="%.2f" fill="%s">%s</text>' % (
                p(x, y), -e.dxf.rotation, e.dxf.height * scale * 1.3, c,
                e.dxf.text.replace("&", "&amp;").replace("<", "&lt;")))
    for need in ("LINE", "LWPOLYLINE", "SOLID", "TEXT", "CIRCLE", "ARC"):
        if need not in kinds:
            fail("DXF: no %s entity" % need)
    open(out, "w").write(svg_doc(w, h, body))


def cgm_elements(data):
    at = 0
    while at < len(data):
        if at + 2 > len(data):
            fail("CGM: truncated header at %d" % at)
        head, = struct.unpack(">H", data[at:at + 2])
        at += 2
        cls, eid, length = head >> 12, (head >> 5) & 0x7F, head & 0x1F
        params = b""
        if length == 31:
            while True:
                word, = struct.unpack(">H", data[at:at + 2])
                at += 2
                part = word & 0x7FFF
                params += data[at:at + part]
                at += part + (part & 1)
                if not word & 0x8000:
                    break
        else:
            params = data[at:at + length]
            at += length + (length & 1)
        if at > len(data):
            fail("CGM: element (%d, %d) runs past the end" % (cls, eid))
        yield cls, eid, params


def cgm(path, out):
    data = open(path, "rb").read()
    elements = list(cgm_elements(data))
    ids = [(c, i) for c, i, _ in elements]
    if ids[0] != (0, 1) or ids[-1] != (0, 2):
        fail("CGM: does not begin and end a metafile")
    if ids[1:7] != [(1, 1), (1, 2), (1, 3), (1, 4), (1, 5), (1, 6)]:
        fail("CGM: metafile descriptor out of order: %s" % ids[1:7])
    if ids.count((0, 3)) != ids.count((0, 5)) or ids.count((0, 3)) < 1:
        fail("CGM: pictures not closed")
    title = elements[0][2]
    if title[0] != len(title) - 1:
        fail("CGM: title count byte")
    fonts = [p for c, i, p in elements if (c, i) == (1, 13)][0]
    names, k = [], 0
    while k < len(fonts):
        names.append(fonts[k + 1:k + 1 + fonts[k]].decode())
        k += 1 + fonts[k]
    if len(names) != 16 or names[4] != "Arial" or len(fonts) != 260:
        fail("CGM: font list %s (%d bytes)" % (names, len(fonts)))
    ext = [struct.unpack(">4h", p) for c, i, p in elements if (c, i) == (2, 6)][0]
    if ext != (0, 0, 6300, 4500):
        fail("CGM: VDC extent %s" % (ext,))
    w, h = 756, 540
    sx, sy = w / ext[2], h / ext[3]

    def pts(p):
        v = struct.unpack(">%dh" % (len(p) // 2), p)
        return " ".join("%.2f,%.2f" % (v[j] * sx, h - v[j + 1] * sy) for j in range(0, len(v) - 1, 2))

    body, line, fill, text, interior = [], "#000", "#000", "#000", 1
    kinds = set()
    for c, i, p in elements:
        if (c, i) in ((5, 4), (5, 23), (5, 14)):
            col = "#%02x%02x%02x" % (p[0], p[1], p[2])
            if i == 4:
                line = col
            elif i == 23:
                fill = col
            else:
                text = col
        elif (c, i) == (5, 22):
            interior, = struct.unpack(">h", p[:2])
        elif (c, i) == (4, 1):
            kinds.add("polyline")
            body.append('<polyline points="%s" stroke="%s" fill="none"/>' % (pts(p), line))
        elif (c, i) == (4, 7):
            kinds.add("polygon")
            body.append('<polygon points="%s" fill="%s" fill-rule="evenodd"/>' % (pts(p), fill))
        elif (c, i) == (4, 11):
            kinds.add("rectangle")
            x1, y1, x2, y2 = struct.unpack(">4h", p)
            body.append('<rect x="%.2f" y="%.2f" width="%.2f" height="%.2f" fill="%s"/>' % (
                min(x1, x2) * sx, h - max(y1, y2) * sy, abs(x2 - x1) * sx, abs(y2 - y1) * sy, fill))
        elif (c, i) == (4, 17):
            kinds.add("ellipse")
            cx, cy, ax, ay, bx, by = struct.unpack(">6h", p)
            body.append('<ellipse cx="%.2f" cy="%.2f" rx="%.2f" ry="%.2f" fill="%s" stroke="%s"/>' % (
                cx * sx, h - cy * sy, abs(ax - cx) * sx, abs(by - cy) * sy, fill if interior == 1 else "none", line))
        elif (c, i) == (4, 9):
            kinds.add("cell array")
            px, py, qx, qy, rx, ry, nx, ny, prec, mode = struct.unpack(">10h", p[:20])
            row = 3 * nx + (3 * nx) % 2
            if prec != 8 or mode != 1 or len(p) != 20 + row * ny:
                fail("CGM: cell array of %dx%d, precision %d, mode %d in %d bytes" % (nx, ny, prec, mode, len(p)))
            cw, ch = (rx - px) / nx, (qy - ry) / ny
            for y in range(ny):
                for x in range(nx):
                    r, g, b = p[20 + y * row + 3 * x:23 + y * row + 3 * x]
                    body.append('<rect x="%.2f" y="%.2f" width="%.2f" height="%.2f" fill="#%02x%02x%02x"/>' % (
                        (px + x * cw) * sx, h - (py + y * ch) * sy, cw * sx, abs(ch) * sy + 0.5, r, g, b))
        elif (c, i) == (4, 5):
            kinds.add("text")
            tw, th, x, y, final = struct.unpack(">5h", p[:10])
            s = p[11:11 + p[10]].decode("latin-1")
            if p[10] != len(p) - 11:
                fail("CGM: text count byte %d for %d bytes" % (p[10], len(p) - 11))
            body.append('<text x="%.2f" y="%.2f" font-size="%.2f" fill="%s">%s</text>' % (
                x * sx, h - y * sy, th * sy, text, s.replace("&", "&amp;").replace("<", "&lt;")))
    for need in ("polyline", "polygon", "rectangle", "ellipse", "text", "cell array"):
        if need not in kinds:
            fail("CGM: no %s element" % need)
    open(out, "w").write(svg_doc(w, h, body))


if __name__ == "__main__":
    {"dxf": dxf, "cgm": cgm}[sys.argv[1]](sys.argv[2], sys.argv[3])
    print(sys.argv[1], "ok")
