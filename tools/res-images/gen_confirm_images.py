#!/usr/bin/env python3
"""Draws the pictures of the on-device confirmation and fingerprint dialogs into res/, with the
canvas and PNG writer of gen_images.py (plain Python 3, standard library only). The results are
committed, so the build does not run this.

    python3 tools/res-images/gen_confirm_images.py [output-folder]

USBKey_Confirm.png             the token with its confirmation button lit
USBKey_Fingerprint_Confirm.gif the token with its fingerprint sensor lit (a GIF on purpose)
InputFp.png                    a fingerprint on the fingerprint dialog's dark blue
InputFpAgin.png                the same print in gold inside a "once more" arrow
confirmFp_cancle.png           the fingerprint dialog's cancel mark, and its hover state
confirmFp_cancle_hover.png
"""
import math
import os
import struct
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import gen_images  # noqa: E402
from gen_images import Canvas, _arc, write_png  # noqa: E402

# The dialogs' backgrounds: the common light grey, and the fingerprint dialog's dark blue.
GREY_BG = (240, 240, 240)
FP_BG = (0x28, 0x4B, 0x8C)
GOLD = (255, 185, 15)  # DarkGoldenrod1, the colour of the fingerprint dialog's tips
WHITE = (255, 255, 255)


def fill(canvas, box, sdf, rgb, fOpacity=1.0):
    """Fills the shape whose signed distance function is sdf (negative inside) within box."""
    x0, y0, x1, y1 = (int(v) for v in box)
    for y in range(max(0, y0 - 1), min(canvas.u4Height, y1 + 2)):
        for x in range(max(0, x0 - 1), min(canvas.u4Width, x1 + 2)):
            canvas.blend(x, y, rgb, min(1.0, 0.5 - sdf(x + 0.5, y + 0.5)) * fOpacity)


def rounded_rect(x0, y0, x1, y1, fRadius):
    cx, cy = (x0 + x1) / 2, (y0 + y1) / 2
    hx, hy = (x1 - x0) / 2 - fRadius, (y1 - y0) / 2 - fRadius

    def sdf(px, py):
        dx, dy = abs(px - cx) - hx, abs(py - cy) - hy
        return math.hypot(max(dx, 0), max(dy, 0)) + min(max(dx, dy), 0) - fRadius
    return (x0, y0, x1, y1), sdf


def ellipse(cx, cy, rx, ry):
    def sdf(px, py):
        # scaled distance: exact for circles, close enough for gentle ellipses
        return (math.hypot((px - cx) / rx, (py - cy) / ry) - 1) * min(rx, ry)
    return (cx - rx, cy - ry, cx + rx, cy + ry), sdf


def vertical_gradient(canvas, box, sdf, rgbTop, rgbBottom):
    x0, y0, x1, y1 = (int(v) for v in box)
    for y in range(max(0, y0 - 1), min(canvas.u4Height, y1 + 2)):
        t = (y - y0) / max(1, y1 - y0)
        rgb = tuple(rgbTop[i] * (1 - t) + rgbBottom[i] * t for i in range(3))
        for x in range(max(0, x0 - 1), min(canvas.u4Width, x1 + 2)):
            canvas.blend(x, y, rgb, min(1.0, 0.5 - sdf(x + 0.5, y + 0.5)))


def fingerprint_arcs(cx, cy, fScale, nRidges=8):
    """Ridges of a loop-type print: nested arches open at the bottom, each with a small break."""
    aArcs = []
    for i in range(nRidges):
        r = fScale * (0.16 + 0.105 * i)
        fGap = 200 + (i * 47) % 120  # where the ridge breaks, varied per ridge
        aArcs.append(_arc(cx, cy + 0.05 * i * fScale, r * 0.82, r, 160, fGap - 8, 10))
        aArcs.append(_arc(cx, cy + 0.05 * i * fScale, r * 0.82, r, fGap + 8, 380, 10))
    aArcs.append([((cx, cy - 0.05 * fScale), (cx, cy + 0.22 * fScale))])  # the core
    return aArcs


def draw_token(canvas, bFingerprint):
    """The token lying across the picture: connector on the left, body, display, and either the
    confirmation button or the fingerprint sensor, lit and ringed to ask for a touch."""
    w, h = canvas.u4Width, canvas.u4Height
    # metal connector
    box, sdf = rounded_rect(18, h * 0.36, 70, h * 0.64, 3)
    vertical_gradient(canvas, box, sdf, (214, 218, 224), (150, 156, 166))
    for x in (34, 52):
        canvas.rect(x, int(h * 0.43), x + 8, int(h * 0.49), (90, 96, 106))
    # body with a soft shadow
    box, sdf = rounded_rect(66, h * 0.18 + 5, w - 14, h * 0.82 + 5, 26)
    fill(canvas, box, sdf, (0, 0, 0), 0.12)
    box, sdf = rounded_rect(62, h * 0.18, w - 18, h * 0.82, 26)
    vertical_gradient(canvas, box, sdf, (46, 92, 168), (20, 48, 102))
    canvas.strokes([((84, h * 0.18 + 6), (w - 42, h * 0.18 + 6))], 1.2, WHITE, 0.35)
    # display showing a check mark
    box, sdf = rounded_rect(92, h * 0.34, 176, h * 0.66, 6)
    fill(canvas, box, sdf, (16, 24, 36))
    canvas.strokes([((114, h * 0.50), (128, h * 0.58)), ((128, h * 0.58), (154, h * 0.40))],
                   3.0, (120, 230, 140))
    cx, cy = w - 70, h * 0.5
    if bFingerprint:
        box, sdf = ellipse(cx, cy, 30, 36)
        fill(canvas, box, sdf, (12, 30, 70))
        for aArc in fingerprint_arcs(cx, cy - 6, 34, 6):
            canvas.strokes(aArc, 1.3, (120, 210, 255))
        canvas.ring(cx, cy, 42, 2.5, GOLD)
    else:
        box, sdf = ellipse(cx, cy, 24, 24)
        fill(canvas, box, sdf, (255, 214, 102))
        box, sdf = ellipse(cx - 5, cy - 6, 10, 8)
        fill(canvas, box, sdf, WHITE, 0.5)
        canvas.ring(cx, cy, 33, 3, GOLD)
        canvas.ring(cx, cy, 43, 1.6, (255, 214, 102))


def draw_usbkey_confirm():
    c = Canvas(320, 160, GREY_BG)
    draw_token(c, False)
    return c


def draw_usbkey_fingerprint():
    c = Canvas(320, 160, GREY_BG)
    draw_token(c, True)
    return c


def draw_input_fp(bAgain):
    c = Canvas(160, 160, FP_BG)
    box, sdf = ellipse(80, 80, 66, 66)
    fill(c, box, sdf, (52, 92, 160))
    rgbRidge = GOLD if bAgain else (170, 225, 255)
    for aArc in fingerprint_arcs(80, 74, 60, 8 if not bAgain else 7):
        c.strokes(aArc, 1.8, rgbRidge)
    if bAgain:
        # a circling arrow around the print, its head at the end: press once more
        c.strokes(_arc(80, 80, 72, 72, -60, 230, 40), 2.6, GOLD)
        fEnd = math.radians(230)
        tip = (80 + 72 * math.cos(fEnd), 80 + 72 * math.sin(fEnd))
        fBack = math.atan2(-math.cos(fEnd), math.sin(fEnd))  # against the direction of travel
        c.strokes([(tip, (tip[0] + 15 * math.cos(fBack + s), tip[1] + 15 * math.sin(fBack + s)))
                   for s in (-0.6, 0.6)], 2.6, GOLD)
    return c


def draw_cancel(bHover):
    c = Canvas(28, 28, FP_BG)
    if bHover:
        box, sdf = ellipse(14, 14, 12, 12)
        fill(c, box, sdf, (214, 72, 56))
        rgbCross = WHITE
    else:
        c.ring(14, 14, 11, 1.6, (170, 190, 225))
        rgbCross = (200, 214, 240)
    c.strokes([((9, 9), (19, 19)), ((19, 9), (9, 19))], 1.4, rgbCross)
    return c


def quantize(canvas):
    """Palette (at most 256 colours) and one index per pixel: channels are rounded to coarser
    steps until the picture has few enough colours."""
    aPixels = [px for row in canvas.rows() for px in row]
    u4Step = 1
    while True:
        aRounded = [tuple(min(255, (v + u4Step // 2) // u4Step * u4Step) for v in px)
                    for px in aPixels]
        aPalette = sorted(set(aRounded))
        if len(aPalette) <= 256:
            break
        u4Step *= 2
    mapIndex = {rgb: i for i, rgb in enumerate(aPalette)}
    return aPalette, [mapIndex[px] for px in aRounded]


def lzw(aIndices, u4MinCodeSize):
    """GIF's variable-length LZW: codes packed least significant bit first."""
    u4Clear = 1 << u4MinCodeSize
    u4End = u4Clear + 1
    out = bytearray()
    state = {'acc': 0, 'bits': 0}

    def emit(u4Code, u4Size):
        state['acc'] |= u4Code << state['bits']
        state['bits'] += u4Size
        while state['bits'] >= 8:
            out.append(state['acc'] & 0xFF)
            state['acc'] >>= 8
            state['bits'] -= 8

    def fresh():
        return {(i,): i for i in range(u4Clear)}, u4End + 1, u4MinCodeSize + 1

    table, u4Next, u4Size = fresh()
    emit(u4Clear, u4Size)
    w = ()
    for k in aIndices:
        wk = w + (k,)
        if wk in table:
            w = wk
            continue
        emit(table[w], u4Size)
        if u4Next < 4096:
            table[wk] = u4Next
            if u4Next == (1 << u4Size) and u4Size < 12:
                u4Size += 1
            u4Next += 1
        else:
            emit(u4Clear, u4Size)
            table, u4Next, u4Size = fresh()
        w = (k,)
    if w:
        emit(table[w], u4Size)
    emit(u4End, u4Size)
    if state['bits']:
        out.append(state['acc'] & 0xFF)
    return bytes(out)


def write_gif(path, canvas):
    aPalette, aIndices = quantize(canvas)
    aPalette += [(0, 0, 0)] * (256 - len(aPalette))
    data = lzw(aIndices, 8)
    blocks = b''.join(bytes((len(data[i:i + 255]),)) + data[i:i + 255]
                      for i in range(0, len(data), 255))
    with open(path, 'wb') as f:
        f.write(b'GIF89a' + struct.pack('<HHBBB', canvas.u4Width, canvas.u4Height, 0xF7, 0, 0))
        f.write(b''.join(bytes(rgb) for rgb in aPalette))
        f.write(b',' + struct.pack('<HHHHB', 0, 0, canvas.u4Width, canvas.u4Height, 0))
        f.write(bytes((8,)) + blocks + b'\x00;')


IMAGES = {
    'USBKey_Confirm.png': (draw_usbkey_confirm, write_png),
    'USBKey_Fingerprint_Confirm.gif': (draw_usbkey_fingerprint, write_gif),
    'InputFp.png': (lambda: draw_input_fp(False), write_png),
    'InputFpAgin.png': (lambda: draw_input_fp(True), write_png),
    'confirmFp_cancle.png': (lambda: draw_cancel(False), write_png),
    'confirmFp_cancle_hover.png': (lambda: draw_cancel(True), write_png),
}


if __name__ == '__main__':
    gen_images.main(IMAGES)
