#!/usr/bin/env python3
"""Draws the dialogs' images into res/ (run it from anywhere; plain Python 3, no modules
beyond the standard library). The results are committed, so the build does not run this.

    python3 tools/res-images/gen_images.py [output-folder]

Shapes are drawn as anti-aliased strokes: every pixel's coverage comes from its distance to the
nearest segment, so edges stay smooth without supersampling.
"""
import math
import os
import struct
import sys
import zlib


class Canvas:
    def __init__(self, u4Width, u4Height, rgb=(255, 255, 255)):
        self.u4Width = u4Width
        self.u4Height = u4Height
        self.aPixels = [list(map(float, rgb)) for _ in range(u4Width * u4Height)]

    def blend(self, x, y, rgb, fAlpha):
        if fAlpha <= 0 or not (0 <= x < self.u4Width and 0 <= y < self.u4Height):
            return
        fAlpha = min(fAlpha, 1.0)
        p = self.aPixels[y * self.u4Width + x]
        for i in range(3):
            p[i] = p[i] * (1 - fAlpha) + rgb[i] * fAlpha

    def gradient(self, rgbLeft, rgbRight):
        for y in range(self.u4Height):
            for x in range(self.u4Width):
                t = x / max(1, self.u4Width - 1)
                self.aPixels[y * self.u4Width + x] = [
                    rgbLeft[i] * (1 - t) + rgbRight[i] * t for i in range(3)]

    def rect(self, x0, y0, x1, y1, rgb, fAlpha=1.0):
        for y in range(max(0, y0), min(self.u4Height, y1)):
            for x in range(max(0, x0), min(self.u4Width, x1)):
                self.blend(x, y, rgb, fAlpha)

    def strokes(self, aSegments, fRadius, rgb, fOpacity=1.0):
        """Draws segments ((x0, y0), (x1, y1)) with round caps, fRadius pixels thick each side."""
        if not aSegments:
            return
        xs = [c for s in aSegments for c in (s[0][0], s[1][0])]
        ys = [c for s in aSegments for c in (s[0][1], s[1][1])]
        for y in range(int(min(ys) - fRadius - 2), int(max(ys) + fRadius + 3)):
            for x in range(int(min(xs) - fRadius - 2), int(max(xs) + fRadius + 3)):
                px, py = x + 0.5, y + 0.5
                d = min(_segment_distance(px, py, s) for s in aSegments)
                self.blend(x, y, rgb, min(1.0, fRadius + 0.5 - d) * fOpacity)

    def ring(self, cx, cy, fRadius, fWidth, rgb):
        r = int(fRadius + fWidth + 2)
        for y in range(int(cy) - r, int(cy) + r + 1):
            for x in range(int(cx) - r, int(cx) + r + 1):
                d = abs(math.hypot(x + 0.5 - cx, y + 0.5 - cy) - fRadius)
                self.blend(x, y, rgb, fWidth / 2 + 0.5 - d)

    def rows(self):
        for y in range(self.u4Height):
            row = self.aPixels[y * self.u4Width:(y + 1) * self.u4Width]
            yield [tuple(max(0, min(255, int(round(c)))) for c in p) for p in row]


def _segment_distance(px, py, seg):
    (x0, y0), (x1, y1) = seg
    dx, dy = x1 - x0, y1 - y0
    fLen2 = dx * dx + dy * dy
    t = 0.0 if fLen2 == 0 else max(0.0, min(1.0, ((px - x0) * dx + (py - y0) * dy) / fLen2))
    return math.hypot(px - (x0 + t * dx), py - (y0 + t * dy))


def _arc(cx, cy, rx, ry, fFrom, fTo, nSteps=12):
    """Polyline of an elliptic arc, angles in degrees (0 = right, 90 = down)."""
    pts = []
    for i in range(nSteps + 1):
        a = math.radians(fFrom + (fTo - fFrom) * i / nSteps)
        pts.append((cx + rx * math.cos(a), cy + ry * math.sin(a)))
    return list(zip(pts, pts[1:]))


# A small stroke font on a unit cell: x in [0, w], y in [0, 1] from cap height (0) to baseline
# (1); x-height at 0.42, descenders to 1.35. Each glyph: (advance, segment list).
def _glyphs():
    g = {}
    g['U'] = (0.72, [((0.06, 0), (0.06, 0.62))] + _arc(0.36, 0.62, 0.30, 0.38, 180, 0)
              + [((0.66, 0.62), (0.66, 0))])
    g['K'] = (0.66, [((0.06, 0), (0.06, 1)), ((0.60, 0), (0.06, 0.60)),
                     ((0.26, 0.40), (0.62, 1))])
    g['e'] = (0.60, [((0.05, 0.71), (0.53, 0.71))] + _arc(0.29, 0.71, 0.24, 0.29, 0, -300, 16))
    g['y'] = (0.58, [((0.04, 0.42), (0.29, 1.0)), ((0.54, 0.42), (0.22, 1.2)),
                     ((0.22, 1.2), (0.10, 1.33))])
    g['S'] = (0.60, _arc(0.30, 0.25, 0.24, 0.25, -20, -270, 10)
              + _arc(0.30, 0.75, 0.24, 0.25, -90, 160, 10))
    g['E'] = (0.56, [((0.06, 0), (0.06, 1)), ((0.06, 0), (0.50, 0)), ((0.06, 0.5), (0.44, 0.5)),
                     ((0.06, 1), (0.50, 1))])
    g['C'] = (0.64, _arc(0.36, 0.5, 0.30, 0.5, -45, -315, 16))
    g['R'] = (0.60, [((0.06, 1), (0.06, 0)), ((0.06, 0), (0.30, 0)), ((0.06, 0.52), (0.30, 0.52)),
                     ((0.30, 0.52), (0.54, 1))] + _arc(0.30, 0.26, 0.24, 0.26, -90, 90, 10))
    g['I'] = (0.20, [((0.08, 0), (0.08, 1))])
    g['T'] = (0.58, [((0.02, 0), (0.56, 0)), ((0.29, 0), (0.29, 1))])
    g['Y'] = (0.60, [((0.02, 0), (0.30, 0.52)), ((0.58, 0), (0.30, 0.52)),
                     ((0.30, 0.52), (0.30, 1))])
    g['O'] = (0.74, _arc(0.37, 0.5, 0.33, 0.5, 0, 360, 24))
    g['N'] = (0.68, [((0.06, 1), (0.06, 0)), ((0.06, 0), (0.62, 1)), ((0.62, 1), (0.62, 0))])
    g['P'] = (0.58, [((0.06, 1), (0.06, 0)), ((0.06, 0), (0.30, 0)),
                     ((0.06, 0.52), (0.30, 0.52))] + _arc(0.30, 0.26, 0.24, 0.26, -90, 90, 10))
    g[' '] = (0.36, [])
    return g


GLYPHS = _glyphs()


def text_segments(szText, x, yTop, fSize, fTracking=0.10):
    """Segments of szText with cap height fSize, starting at x; returns (segments, end x)."""
    aSegs = []
    for ch in szText:
        fAdvance, aGlyph = GLYPHS[ch]
        for (x0, y0), (x1, y1) in aGlyph:
            aSegs.append(((x + x0 * fSize, yTop + y0 * fSize), (x + x1 * fSize, yTop + y1 * fSize)))
        x += (fAdvance + fTracking) * fSize
    return aSegs, x


def key_segments(cx, cy, fScale):
    """A key lying horizontally: the bow is drawn separately as a ring around (cx, cy)."""
    x0 = cx + 0.55 * fScale
    x1 = cx + 2.3 * fScale
    return [((x0, cy), (x1, cy)),
            ((x1 - 0.05 * fScale, cy), (x1 - 0.05 * fScale, cy + 0.45 * fScale)),
            ((x1 - 0.45 * fScale, cy), (x1 - 0.45 * fScale, cy + 0.32 * fScale))]


def draw_logo_long(u4Width=380, u4Height=64):
    c = Canvas(u4Width, u4Height)
    c.gradient((22, 62, 120), (58, 124, 200))
    # faint diagonal bands at the right end for depth
    for i in range(5):
        x = u4Width - 110 + i * 24
        c.strokes([((x, u4Height + 8), (x + 44, -8))], 6, (255, 255, 255), 0.10)
    white = (255, 255, 255)
    c.ring(32, 30, 9.5, 4.2, white)
    c.strokes(key_segments(32, 30, 15), 2.2, white)
    aSegs, xEnd = text_segments('UKey', 80, 16, 24, 0.08)
    c.strokes(aSegs, 2.1, white)
    aSegs, _ = text_segments('SECURITY TOKEN', xEnd + 16, 30, 10, 0.22)
    c.strokes(aSegs, 0.9, (205, 225, 250))
    c.rect(0, u4Height - 3, u4Width, u4Height, (240, 176, 48))
    return c


def write_bmp(path, canvas):
    u4RowSize = (canvas.u4Width * 3 + 3) & ~3
    aRows = list(canvas.rows())
    body = bytearray()
    for row in reversed(aRows):  # BMP rows go bottom-up
        line = bytearray()
        for r, g, b in row:
            line += bytes((b, g, r))
        line += b'\0' * (u4RowSize - len(line))
        body += line
    header = struct.pack('<2sIHHI', b'BM', 54 + len(body), 0, 0, 54)
    info = struct.pack('<IiiHHIIiiII', 40, canvas.u4Width, canvas.u4Height, 1, 24, 0, len(body),
                       2835, 2835, 0, 0)
    with open(path, 'wb') as f:
        f.write(header + info + body)


def write_png(path, canvas):
    raw = bytearray()
    for row in canvas.rows():
        raw.append(0)
        for px in row:
            raw += bytes(px)

    def chunk(tag, data):
        return (struct.pack('>I', len(data)) + tag + data
                + struct.pack('>I', zlib.crc32(tag + data) & 0xFFFFFFFF))

    ihdr = struct.pack('>IIBBBBB', canvas.u4Width, canvas.u4Height, 8, 2, 0, 0, 0)
    with open(path, 'wb') as f:
        f.write(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', ihdr)
                + chunk(b'IDAT', zlib.compress(bytes(raw), 9)) + chunk(b'IEND', b''))


IMAGES = {
    'Logo_Long.bmp': (draw_logo_long, write_bmp),
}


def main(images=IMAGES):
    """Writes each picture of images (name: (draw, write)) into the folder given, or res/."""
    szOut = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(os.path.abspath(__file__)), '..', '..', 'res')
    for szName, (pfnDraw, pfnWrite) in sorted(images.items()):
        pfnWrite(os.path.join(szOut, szName), pfnDraw())
        print('wrote', os.path.normpath(os.path.join(szOut, szName)))


if __name__ == '__main__':
    main()
