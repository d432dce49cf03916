#!/usr/bin/env python3
"""Builds the configuration image from its text table.

Usage: NyCfgImageGen.py TABLE OUT_CPP OUT_BIN

OUT_CPP defines g_pu1ConfigProjHarbourline: the image preceded by its length as a 4-byte
big-endian number. OUT_BIN receives the image alone (for tools and fuzzing seeds).
The table format is described at the top of the table itself.
"""
import struct
import sys

KINDS = {"raw": 0, "text": 1, "u8": 2, "u16": 3, "u32": 4}
NUMBER_FORMATS = {"u8": "<B", "u16": "<H", "u32": "<I"}
# Variants in storage order: (table tag, language index in the image).
VARIANTS = [("zh-CN", 1), ("en", 0), ("zh-TW", 2)]
ESCAPES = {'"': '"', "\\": "\\", "r": "\r", "n": "\n", "t": "\t"}


class TableError(Exception):
    pass


def unquote(text, where):
    if len(text) < 2 or text[0] != '"' or text[-1] != '"':
        raise TableError(f"{where}: text must be in double quotes")
    out = []
    body = text[1:-1]
    i = 0
    while i < len(body):
        ch = body[i]
        if ch == "\\":
            if i + 1 >= len(body) or body[i + 1] not in ESCAPES:
                raise TableError(f"{where}: bad escape in {text}")
            out.append(ESCAPES[body[i + 1]])
            i += 2
            continue
        if ch == '"':
            raise TableError(f"{where}: unescaped quote in {text}")
        out.append(ch)
        i += 1
    return "".join(out)


def parse_number(kind, text, where):
    try:
        value = int(text, 0)
        return struct.pack(NUMBER_FORMATS[kind], value)
    except (ValueError, struct.error):
        raise TableError(f"{where}: {text!r} is not a valid {kind}") from None


def parse_raw(fields):
    if not fields or any(len(f) != 2 for f in fields):
        return None
    try:
        return bytes(int(f, 16) for f in fields)
    except ValueError:
        return None


def parse_header(line, where):
    fields = line.split()
    try:
        entry_id = int(fields[0], 16)
    except ValueError:
        raise TableError(f"{where}: bad id {fields[0]!r}") from None
    if len(fields) < 2 or fields[1] not in KINDS:
        raise TableError(f"{where}: expected one of {', '.join(KINDS)} after the id")
    kind = fields[1]
    if (entry_id >> 16) & 0xF != KINDS[kind]:
        raise TableError(f"{where}: id 0x{entry_id:08X} does not carry the type of {kind}")
    if (entry_id >> 20) & 0xF >= 8 or entry_id > 0xFFFFFFFF:
        raise TableError(f"{where}: id 0x{entry_id:08X} is outside groups 0-7")
    return entry_id, kind, fields[2:]


def parse_table(lines):
    """Returns [(id, kind, value)] where value is bytes, or {tag: str} for texts."""
    entries = []
    for number, raw_line in enumerate(lines, 1):
        where = f"line {number}"
        line = raw_line.strip()
        if not line or line.startswith("#"):
            continue
        tag, _, rest = line.partition(" ")
        if tag in dict(VARIANTS):
            if not entries or entries[-1][1] != "text":
                raise TableError(f"{where}: variant outside a text entry")
            variants = entries[-1][2]
            if tag in variants:
                raise TableError(f"{where}: second {tag} variant")
            variants[tag] = unquote(rest.strip(), where)
            continue
        entry_id, kind, fields = parse_header(line, where)
        if kind == "text":
            if fields:
                raise TableError(f"{where}: the variants of a text go on the lines below")
            value = {}
        elif kind == "raw":
            value = parse_raw(fields)
            if value is None:
                raise TableError(f"{where}: raw values are hexadecimal bytes")
        else:
            if len(fields) != 1:
                raise TableError(f"{where}: a number takes exactly one value")
            value = parse_number(kind, fields[0], where)
        entries.append((entry_id, kind, value))
    return entries


def check_entries(entries):
    slots = {}
    for entry_id, kind, value in entries:
        slot = (entry_id >> 20 & 0xF, entry_id & 0xFFF)
        if slot in slots:
            raise TableError(f"0x{entry_id:08X} uses the slot of 0x{slots[slot]:08X}")
        slots[slot] = entry_id
        if kind == "text" and set(value) != set(dict(VARIANTS)):
            raise TableError(f"0x{entry_id:08X} needs exactly the variants zh-CN, en, zh-TW")


def encode_entry(entry_id, kind, value):
    if kind == "text":
        body = b""
        for tag, language in VARIANTS:
            text = value[tag].encode("utf-8") + b"\0"
            body += struct.pack("<BI", language, len(text)) + text
    else:
        body = value
    return struct.pack("<II", entry_id, len(body)) + body


def write_cpp(path, image):
    blob = struct.pack(">I", len(image)) + image
    rows = []
    for start in range(0, len(blob), 16):
        rows.append("    " + ", ".join(f"0x{b:02X}" for b in blob[start:start + 16]) + ",")
    with open(path, "w", encoding="ascii") as out:
        out.write("// Generated from ConfigProjHarbourline.txt by NyCfgImageGen.py. Do not edit.\n")
        out.write('#include "NyConfigImage.h"\n\n')
        out.write(f"extern const unsigned char g_pu1ConfigProjHarbourline[{len(blob)}] = {{\n")
        out.write("\n".join(rows))
        out.write("\n};\n")


def main(argv):
    if len(argv) != 4:
        sys.stderr.write(__doc__)
        return 2
    table, out_cpp, out_bin = argv[1:]
    try:
        with open(table, encoding="utf-8") as source:
            entries = parse_table(source.read().splitlines())
        check_entries(entries)
    except TableError as error:
        sys.stderr.write(f"{table}: {error}\n")
        return 1
    image = b"".join(encode_entry(*entry) for entry in entries)
    write_cpp(out_cpp, image)
    with open(out_bin, "wb") as out:
        out.write(image)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
