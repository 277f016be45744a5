#!/usr/bin/env python3
"""Checks the shipped data files the way the program reads them.

    python3 tools/datagen/check_data.py [data-dir]

Exit status 0 when every check passes; each failure is printed.
"""

import os
import re
import sys

FAILS = []


def check(cond, what):
    if not cond:
        FAILS.append(what)


def extract_data(text, n):
    """Field n (from 1) of a list entry, with the reader's own rules: only a
    tab moves on; a missing tab ends the field at ';' or CR instead."""
    def stop_from(pos):
        for mark in ("\t", ";", "\r"):
            i = text.find(mark, pos)
            if i >= 0:
                return i
        return -1

    stop = stop_from(0)
    if stop < 0:
        return ""
    start = 0
    for _ in range(2, n + 1):
        start = text.find("\t", stop) + 1
        stop = stop_from(start)
        if stop < 0:
            return ""
    return text[start:stop]


def read_list(lines, key):
    """Values of every key=value line of a key, in file order."""
    out = []
    for line in lines:
        p = line.find("=")
        if p < 0:
            p = line.find("]")
        if p <= 0:
            continue
        if line[:p].lower() == key.lower():
            out.append(line[p + 1:])
    return out


def is_number(text):
    return re.fullmatch(r"-?\d+(\.\d+)?", text) is not None


def check_ini(path):
    raw = open(path, "rb").read()
    check(raw.endswith(b"\r\n"), "ini: last line not ended by CR LF")
    check(b"\n" not in raw.replace(b"\r\n", b""), "ini: bare LF")
    check(b"\r" not in raw.replace(b"\r\n", b""), "ini: bare CR")
    text = raw.decode("utf-8")
    lines = text.split("\r\n")[:-1]

    for i, line in enumerate(lines):
        if "=" not in line:
            check("]" not in line, "ini line %d: ']' would make it a key" % (i + 1))
            check(line == "" or line.startswith(";"), "ini line %d: stray text" % (i + 1))

    for key, want in (("comport1", "1"), ("Language", "ENG"), ("Autoguide", "1"),
                      ("ComSpeed", "0"), ("Autostart_Log", "0"), ("Autostart_Live", "0"),
                      ("ManualUSBDetect", "0"), ("Default_interface", "Serial")):
        vals = read_list(lines, key)
        check(vals == [want], "ini: %s is %r, want %r" % (key, vals, want))

    # Sensors: one block, closed by a line without '=' so that the editor's
    # new entries land at its end.
    idx = [i for i, l in enumerate(lines) if l.lower().startswith("sens_def=")]
    if not idx:
        check(False, "ini: no Sens_Def lines")
        return 0, 0, []
    check(idx == list(range(idx[0], idx[-1] + 1)), "ini: Sens_Def lines not contiguous")
    check(idx[-1] + 1 < len(lines) and "=" not in lines[idx[-1] + 1],
          "ini: Sens_Def block not followed by a line without '='")
    sens = read_list(lines, "Sens_Def")
    check(len(sens) >= 20, "ini: only %d Sens_Def rows" % len(sens))
    names = []
    for k, entry in enumerate(sens, start=1):
        check(";" not in entry, "Sens_Def %d: ';' inside" % k)
        fields = entry.split("\t")
        check(fields[-1] == "", "Sens_Def %d: last field not closed by a tab" % k)
        fields = fields[:-1]
        kind = fields[1] if len(fields) > 1 else ""
        want = {"Linear": 9, "Tab": 38}.get(kind)
        check(want is not None, "Sens_Def %d: type %r" % (k, kind))
        check(len(fields) == want, "Sens_Def %d: %d fields, want %s" % (k, len(fields), want))
        for n, f in enumerate(fields, start=1):
            check(extract_data(entry + "\r\n", n) == f, "Sens_Def %d: field %d reads wrong" % (k, n))
        names.append(fields[0])
        if kind == "Linear":
            gain, off, lo, hi = fields[2:6]
            check(all(is_number(x) for x in (gain, off, lo, hi)), "Sens_Def %d: numbers" % k)
            check(float(gain) != 0, "Sens_Def %d: zero gain" % k)
            check(0 <= float(lo) < float(hi) <= 255, "Sens_Def %d: min/max" % k)
            check(fields[7].isdigit(), "Sens_Def %d: decimals" % k)
        elif kind == "Tab":
            pts = fields[2:35]
            check(all(is_number(p) for p in pts), "Sens_Def %d: points" % k)
            v = [float(p) for p in pts]
            d = [b - a for a, b in zip(v, v[1:])]
            check(all(x > 0 for x in d) or all(x < 0 for x in d),
                  "Sens_Def %d: points not strictly monotonic" % k)
            check(fields[36].isdigit(), "Sens_Def %d: decimals" % k)
    check(len(set(names)) == len(names), "Sens_Def: duplicate names")
    for name in names:
        hits = [e for e in sens if name in e]
        check(len(hits) == 1, "Sens_Def: name %r is part of %d entries" % (name, len(hits)))

    an_sel = []
    for i in range(1, 13):
        v = read_list(lines, "an_sel%d" % i)
        check(len(v) == 1 and v[0].isdigit() and 0 < int(v[0]) <= len(sens),
              "ini: an_sel%d is %r" % (i, v))
        an_sel.append(int(v[0]) if v and v[0].isdigit() else -1)

    eng = read_list(lines, "Engine_Config")
    check(len(eng) == 50, "ini: %d Engine_Config lines, want 1 heading + 49" % len(eng))
    guide = set()
    for k, entry in enumerate(eng):
        check(";" not in entry, "Engine_Config line %d: ';' inside" % (k + 1))
        cols = entry.split("\t")
        check(len(cols) == 23, "Engine_Config line %d: %d columns" % (k + 1, len(cols)))
        if len(cols) != 23:
            continue
        for n in (1, 8, 11, 19, 23):
            check(extract_data(entry + "\r\n", n) == cols[n - 1],
                  "Engine_Config line %d: field %d reads wrong" % (k + 1, n))
        check(all(c != "" for c in cols), "Engine_Config line %d: empty column" % (k + 1))
        if k == 0:
            continue
        check(cols[0] == str(k - 1), "Engine_Config line %d: column 0" % (k + 1))
        check(is_number(cols[18]) and float(cols[18]) > 0,
              "Engine_Config line %d: degrees per tooth" % (k + 1))
        check(is_number(cols[17]), "Engine_Config line %d: crank angle" % (k + 1))
        check(cols[8].startswith("EX: "), "Engine_Config line %d: car example" % (k + 1))
        check(cols[14] in ("-", "") or (cols[14].startswith(",") and cols[14].endswith(",")),
              "Engine_Config line %d: forbidden teeth" % (k + 1))
        cyl = cols[5].split("-")
        check(cols[10] == "%d cylinders" % len(cyl), "Engine_Config line %d: cylinders" % (k + 1))
        check(sorted(cyl, key=int) == [str(i) for i in range(1, len(cyl) + 1)],
              "Engine_Config line %d: firing order" % (k + 1))
        ign_ch = set(cols[16].split("-"))
        fuel_ch = set(cols[20].split("-"))
        check(ign_ch <= set("ABCD"), "Engine_Config line %d: ignition channels" % (k + 1))
        check(fuel_ch <= set("ABCDEFGH"), "Engine_Config line %d: fuel channels" % (k + 1))
        semi = "Semiseq" in cols[7]
        check(cols[7] in ("Semiseq", "Sequential"), "Engine_Config line %d: fuel" % (k + 1))
        if not semi:
            check(cols[2] != "No cam" or cols[4] != "No TDC",
                  "Engine_Config line %d: sequential without phase sensor" % (k + 1))
        if 2 <= k <= 35:
            key = tuple(cols[i] for i in (10, 6, 7, 1, 2, 3, 4, 5, 8))
            check(key not in guide, "Engine_Config line %d: guide duplicate" % (k + 1))
            guide.add(key)

    presets = read_list(lines, "preset_list")
    check(len(presets) >= 3, "ini: too few presets")
    for p in presets:
        m = re.fullmatch(r"(\d+)<([^<>$!\u00a3]+)>([^$]*)\$([^!]*)!([^\u00a3]*)\u00a3", p)
        check(m is not None, "preset %r: form" % p)
        if not m:
            continue
        check(m.group(1) == "200", "preset %r: dataset" % p)
        for lst in m.groups()[2:]:
            if lst == "":
                continue
            for item in lst.split(","):
                check(re.fullmatch(r"[@sr]\d+", item) is not None, "preset %r: item %r" % (p, item))
                if item[0] == "@":
                    check(int(item[1:]) <= 255, "preset %r: position %s" % (p, item))
                else:
                    check(int(item[1:]) <= 255, "preset %r: mask %s" % (p, item))
    return len(sens), len(eng) - 1, an_sel


def power_of_two_or_zero(b):
    return b == 0 or (b & (b - 1)) == 0


FUEL_SIZES = [(19, 18), (21, 16), (25, 13), (18, 11), (16, 21), (13, 25), (11, 11), (15, 13)]
IGN_SIZES = [(18, 11), (15, 13), (11, 18), (11, 11)]


def check_qxs(path, sens_count, layouts, an_sel):
    raw = open(path, "rb").read()
    check(raw.endswith(b"\r\n"), "qxs: not ended by CR LF")
    lines = raw.split(b"\r\n")
    check(lines[-1] == b"", "qxs: text after the last CR LF")
    lines = lines[:-1]
    check(len(lines) >= 1025, "qxs: %d lines" % len(lines))
    img = []
    for i, line in enumerate(lines[:1024]):
        m = re.fullmatch(rb" (0|[1-9]\d{0,2}) ", line)
        check(m is not None and int(m.group(1)) <= 255, "qxs line %d: %r" % (i + 1, line))
        img.append(int(m.group(1)) if m else 0)
    comment = lines[1024:]
    check(all(re.fullmatch(rb"[ -~]*", c) for c in comment), "qxs: comment not plain ASCII")
    check(all(b"," not in c and b'"' not in c for c in comment),
          "qxs: comment has commas or quotes, which the reader splits")
    check(all(not c.startswith(b" ") for c in comment), "qxs: comment line starts with a blank")
    check(comment and comment[0] != b"", "qxs: empty comment")

    check(img[255] == 200, "qxs: dataset %d" % img[255])
    check(img[250] == 0 and img[251] == 0, "qxs: bytes 250, 251")
    check(img[6] < layouts, "qxs: layout %d not in the catalogue" % img[6])
    fc, fr = FUEL_SIZES[img[175] & 7]
    ic, ir = IGN_SIZES[img[175] >> 6]
    check(img[175] & 7 == 0, "qxs: fuel table not the default 19 x 18")
    for base, c, r, end_limit, name in ((256, fc, fr, 643, "fuel"), (653, ic, ir, 884, "ignition")):
        check(img[base] == c and img[base + c + 1] == r, "qxs: %s size bytes" % name)
        steps = img[base + 1:base + 1 + c] + img[base + c + 2:base + c + 2 + r]
        check(all(power_of_two_or_zero(b) for b in steps), "qxs: %s axis step not 2^n" % name)
        check(all(b > 0 for b in steps), "qxs: %s axis step 0" % name)
        for part, seq in (("rpm", img[base + 1:base + 1 + c]), ("load", img[base + c + 2:base + c + 2 + r])):
            check(sum(seq) <= 255, "qxs: %s %s axis beyond 255" % (name, part))
        check(base + c + r + 2 + c * r <= end_limit, "qxs: %s block too long" % name)
        cells = img[base + c + r + 2:base + c + r + 2 + c * r]
        check(all(b > 0 for b in cells), "qxs: %s cell 0" % name)
        rows = [cells[i * c:(i + 1) * c] for i in range(r)]
        # Fuel rises with load in every column, ignition falls with it above idle.
        if name == "fuel":
            check(all(rows[i + 1][j] >= rows[i][j] for i in range(r - 1) for j in range(c)),
                  "qxs: fuel falls with load")
    check(img[46] == 1 and img[48] == 5, "qxs: PWM2 extra fuel size bytes")
    check(all(power_of_two_or_zero(b) for b in img[49:54]), "qxs: PWM2 extra fuel axis")
    for b in (186, 187):
        check((img[b] & 15) < 9 and (img[b] >> 4) < 9, "qxs: PWM selection nibble at %d" % b)
    for i in range(12):
        if i >= len(an_sel):
            break
        check(0 < img[884 + i] < sens_count + 1, "qxs: input %d sensor %d" % (i + 1, img[884 + i]))
        check(img[884 + i] == an_sel[i], "qxs: input %d differs from an_sel%d" % (i + 1, i + 1))
    want = [0, 255, 0, 255, 0, 255, 255, 0, 0, 255, 0, 255, 0, 255, 0, 255, 255]
    check(img[980:997] == want, "qxs: error limits")
    check(all(b == 0 for b in img[997:1024]), "qxs: error counters")
    check(5.0 >= img[21] * 0.2 > 0, "qxs: dwell")
    check(0 < (img[17] + 65) * 50 <= 8000, "qxs: rev limit")


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    data = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "..", "data")
    sens_count, layouts, an_sel = check_ini(os.path.join(data, "RZ400_800M3.ini"))
    check_qxs(os.path.join(data, "RZ400_800M3_Default_Settings.qxs"), sens_count, layouts, an_sel)
    for f in FAILS:
        print("FAIL:", f)
    print("%d sensors, %d layouts, %d failures" % (sens_count, layouts, len(FAILS)))
    return 1 if FAILS else 0


if __name__ == "__main__":
    sys.exit(main())
