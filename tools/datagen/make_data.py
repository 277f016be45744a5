#!/usr/bin/env python3
"""Writes the data files the program ships: the configuration file and the
default settings image.

    python3 tools/datagen/make_data.py [output-dir]

The output is deterministic; run tools/datagen/check_data.py afterwards.
Nothing here is needed at build time: the files under data/ are committed.
"""

import math
import os
import sys

CRLF = "\r\n"
DATASET_ID = 200
IMAGE_SIZE = 1024

# ---------------------------------------------------------------------------
# Sensors
# ---------------------------------------------------------------------------

# The box reads every analogue input with an 8-bit converter on 5 V.
VREF = 5.0
RAW_FULL = 255.0

# Thermistor inputs: the value of the box's pull-up is not published, so the
# tables assume 2.2 kOhm to 5 V, the usual choice for these sensors.
NTC_PULLUP_OHM = 2200.0

# Bosch NTC M12 (the coolant and intake air sensors of most European cars).
BOSCH_NTC = [
    (-40, 45313), (-30, 26114), (-20, 15462), (-10, 9397), (0, 5896),
    (10, 3792), (20, 2500), (30, 1707), (40, 1175), (50, 834), (60, 596),
    (70, 436), (80, 323), (90, 243), (100, 187), (110, 144), (120, 113),
    (130, 89.3),
]

# GM coolant/air sensor (the "GM" curve of most aftermarket systems).
GM_NTC = [
    (-40, 100700), (-30, 52700), (-20, 28680), (-10, 16180), (0, 9420),
    (10, 5670), (20, 3520), (30, 2238), (40, 1459), (50, 973), (60, 667),
    (70, 467), (80, 332), (90, 241), (100, 177),
]


def ntc_temperature(curve, ohm):
    """Temperature of a thermistor of the given curve at a resistance.

    1/T is close to linear in ln(R) between neighbouring table points (the
    beta model), so interpolation and the end segments' extrapolation are
    done in that plane.
    """
    pts = sorted(((math.log(r), 1.0 / (t + 273.15)) for t, r in curve))
    x = math.log(ohm)
    seg = len(pts) - 2
    for i in range(len(pts) - 1):
        if x <= pts[i + 1][0]:
            seg = i
            break
    (x0, y0), (x1, y1) = pts[seg], pts[seg + 1]
    y = y0 + (x - x0) * (y1 - y0) / (x1 - x0)
    return 1.0 / y - 273.15


def ntc_points(curve):
    """33 table points at raw 0, 8, ... 256 for a thermistor to ground with a
    pull-up to 5 V. Raw 0 and 256 have no physical reading (short circuit,
    beyond full scale), so those two points continue the neighbouring slope.
    """
    pts = [None] * 33
    for i in range(1, 32):
        raw = 8 * i
        volt = raw * VREF / RAW_FULL
        ohm = NTC_PULLUP_OHM * volt / (VREF - volt)
        pts[i] = ntc_temperature(curve, ohm)
    pts[0] = 2 * pts[1] - pts[2]
    pts[32] = 2 * pts[31] - pts[30]
    return [round(p, 1) for p in pts]


def lin(name, unit, decimals, gain, offset, lo=0, hi=255):
    return {"name": name, "type": "Linear", "unit": unit, "decimals": decimals,
            "gain": gain, "offset": offset, "min": lo, "max": hi}


def tab(name, unit, decimals, points):
    return {"name": name, "type": "Tab", "unit": unit, "decimals": decimals,
            "points": points}


def per_raw(units_per_volt):
    return units_per_volt * VREF / RAW_FULL


def map_sensor(name, kpa_lo, v_lo, kpa_hi, v_hi):
    """Linear absolute pressure sensor in bar, from two points of its
    transfer function. Raw values below 0 bar are clamped."""
    slope = (kpa_hi - kpa_lo) / (v_hi - v_lo)
    kpa_at_0v = kpa_lo - v_lo * slope
    gain = per_raw(slope) / 100.0
    offset = kpa_at_0v / 100.0
    lo = max(0, math.ceil(-offset / gain)) if offset < 0 else 0
    return lin(name, "bar", 2, round(gain, 8), round(offset, 5), lo, 255)


def ratiometric_05_45(name, unit, decimals, full_scale):
    """0.5 V = 0, 4.5 V = full scale, clamped outside."""
    lo, hi = 26, 230  # 0.51 V and 4.51 V
    gain = full_scale / (hi - lo)
    return lin(name, unit, decimals, round(gain, 7), round(-lo * gain, 7), lo, hi)


# The order matters: a settings image stores a sensor by its place in this
# list, and a fresh image selects sensors 1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 5, 6
# for the twelve inputs (AFR, TPS, MAP, coolant, slave x4, battery, air
# temperature, two spares). A missing sensor falls back to number 7.
SENSORS = [
    lin("AFR wideband 0-5V 10-20", "AFR", 1, 0.0392157, 10.0),           # 1
    ratiometric_05_45("TPS 0.5-4.5V", "%", 0, 100.0),                      # 2
    map_sensor("MAP 2.5 bar Bosch", 20, 0.4, 250, 4.65),                   # 3
    tab("Coolant temp Bosch NTC", "C", 0, ntc_points(BOSCH_NTC)),          # 4
    lin("Battery voltage 0-20V", "V", 1, 0.0784314, 0.0),                 # 5
    tab("Air temp Bosch NTC", "C", 0, ntc_points(BOSCH_NTC)),              # 6
    lin("Voltage 0-5V", "V", 2, 0.0196078, 0.0),                           # 7
    map_sensor("MAP 1 bar Bosch", 10, 0.4, 115, 4.65),                     # 8
    map_sensor("MAP 1 bar GM type", 10, 0.0, 105, 5.0),                    # 9
    map_sensor("MAP 2 bar GM type", 8.8, 0.0, 208.8, 5.0),                 # 10
    map_sensor("MAP 3 bar GM type", 1.1, 0.0, 315.5, 5.0),                 # 11
    map_sensor("MAP 3 bar Bosch", 20, 0.4, 300, 4.65),                     # 12
    map_sensor("MAP 4 bar Bosch", 50, 0.4, 400, 4.65),                     # 13
    map_sensor("MAP 5 bar 0.5-4.5V", 0, 0.5, 500, 4.5),                    # 14
    tab("Coolant temp GM NTC", "C", 0, ntc_points(GM_NTC)),                # 15
    tab("Air temp GM NTC", "C", 0, ntc_points(GM_NTC)),                    # 16
    lin("AFR wideband 0-5V 7.35-22.39", "AFR", 1, 0.0589804, 7.35),      # 17
    lin("Lambda wideband 0-5V 0.68-1.36", "lambda", 2, 0.00266667, 0.68),  # 18
    lin("Narrow band lambda 0-1V", "V", 2, 0.0196078, 0.0),               # 19
    lin("TPS 0-5V", "%", 0, 0.3921569, 0.0),                               # 20
    ratiometric_05_45("Oil pressure 0-10 bar 0.5-4.5V", "bar", 1, 10.0),   # 21
    ratiometric_05_45("Fuel pressure 0-7 bar 0.5-4.5V", "bar", 2, 7.0),    # 22
    lin("EGT 0-1250C 0-5V", "C", 0, 4.9019608, 0.0),                       # 23
]

SENS_AFR, SENS_TPS, SENS_MAP, SENS_CLT, SENS_BAT, SENS_IAT = 1, 2, 3, 4, 5, 6
DEFAULT_AN_SEL = [1, 2, 3, 4, 1, 2, 3, 4, 5, 6, 5, 6]


def num(x):
    """Shortest plain decimal text, point as the mark."""
    if isinstance(x, int) or float(x).is_integer():
        return str(int(x))
    text = ("%.8f" % x).rstrip("0").rstrip(".")
    return "0" if text in ("-0", "") else text


def sens_def_line(s):
    if s["type"] == "Linear":
        fields = [s["name"], "Linear", num(s["gain"]), num(s["offset"]),
                  num(s["min"]), num(s["max"]), s["unit"], str(s["decimals"]), "bin"]
    else:
        fields = [s["name"], "Tab"] + [num(p) for p in s["points"]] + \
                 [s["unit"], str(s["decimals"]), "bin"]
    # Every field is closed by a tab, the last one included.
    return "Sens_Def=" + "".join(f + "\t" for f in fields)


def forward(s, raw):
    if s["type"] == "Linear":
        raw = min(max(raw, s["min"]), s["max"])
        return raw * s["gain"] + s["offset"]
    raw = min(max(raw, 0), 255)
    q = int(round(raw)) // 8
    p = s["points"]
    return p[q] + (raw - 8 * q) * (p[q + 1] - p[q]) / 8.0


def reverse(s, value):
    """Raw byte for a physical value, as the program's reverse calculation
    gives it (ties to even)."""
    if s["type"] == "Linear":
        r = round((value - s["offset"]) / s["gain"])
        r = min(r, s["max"])
        return int(max(r, s["min"]))
    p = s["points"]
    falling = p[32] < value < p[0]
    for i in range(32):
        a, b = p[i], p[i + 1]
        if a == value:
            return 8 * i
        if (falling and a > value > b) or (not falling and a < value < b):
            return int(round(8 * i + (value - a) * 8 / (b - a)))
    raise ValueError("%s outside the table of %s" % (value, s["name"]))


def sensor(n):
    return SENSORS[n - 1]


# ---------------------------------------------------------------------------
# Engine layouts
# ---------------------------------------------------------------------------

WHEELS = {
    # crank text: (degrees per tooth, forbidden teeth)
    "Crank 36-1": (10, ",0,35,"),
    "Crank 60-2": (6, ",0,58,"),
    "Crank 24-1": (15, ",0,23,"),
    "Crank 12-1": (30, ",0,11,"),
    "Crank 36-2": (10, ",0,34,"),
    "Crank 36-2-2-2": (10, ",0,"),
    "Crank 36 even": (10, "-"),
    "Dist 24 teeth": (30, "-"),
}

CHANNELS = "ABCDEFGH"


def channel_plan(order, kind):
    """(firing order of the channels, channel to cylinder) for an ignition or
    fuel scheme, in the notation the settings page shows."""
    cyl = order.split("-")
    n = len(cyl)
    if kind in ("Coil on plug", "Sequential") or (kind == "Semiseq" and n % 2):
        seq = [CHANNELS[i] for i in range(n)]
        wiring = ["%s-%s" % (CHANNELS[i], c) for i, c in enumerate(cyl)]
    elif kind == "Distributor":
        seq = ["A"] * n
        wiring = ["A-" + ":".join(cyl)]
    else:  # wasted spark, coil on plug fired in pairs, semi-sequential fuel
        half = n // 2
        seq = [CHANNELS[i % half] for i in range(n)]
        wiring = ["%s-%s:%s" % (CHANNELS[i], cyl[i], cyl[i + half]) for i in range(half)]
    return "-".join(seq), " ".join(wiring)


FW_BASIC = ">2.702"
FW_SEQ = ">3.033"


def layout(crank, cam1, cam2, tdc, order, ign, fuel, example, notes, angle):
    cylinders = len(order.split("-"))
    degrees, forbidden = WHEELS[crank]
    ign_seq, ign_wiring = channel_plan(order, ign)
    fuel_seq, fuel_wiring = channel_plan(order, fuel)
    assert len(set(ign_seq.split("-"))) <= 4, example
    assert len(set(fuel_seq.split("-"))) <= 8, example
    if fuel == "Sequential":
        assert cam1 != "No cam" or tdc != "No TDC", example
    fw = FW_SEQ if (fuel == "Sequential" or ign == "Coil on plug") else FW_BASIC
    return [None, crank, cam1, cam2, tdc, order, ign, fuel, "EX: " + example, "-",
            "%d cylinders" % cylinders, notes, "-", "-", forbidden, "-", ign_seq,
            str(angle), str(degrees), fw, fuel_seq, ign_wiring, fuel_wiring]


HEADING = ["Layout", "Crank sensor", "Cam sensor 1", "Cam sensor 2", "TDC sensor",
           "Firing order", "Ignition type", "Fuel system", "Car example", "Spare",
           "Cylinders", "Cylinder notes", "Spare", "Spare", "Forbidden teeth", "Spare",
           "Ign channel firing order", "Crank angle example", "Degrees per tooth",
           "Needed FW", "Fuel channel firing order", "Ign channel to cyl",
           "Fuel channel to cyl"]

NC, NC2, NT = "No cam", "No cam 2", "No TDC"
CAM1, CAM2 = "Cam 1 tooth", "Cam2 1 tooth"
WS, COP, DIST, COPW = "Wasted spark", "Coil on plug", "Distributor", "Coil on plug (wasted)"
SEQ, SEMI = "Sequential", "Semiseq"
I4, I6, V8 = "In-line", "In-line", "V8 90deg"

LAYOUTS = [
    # 1: value 0, what a fresh image selects; in the list, not in the guide.
    layout("Crank 36-1", NC, NC2, NT, "1-3-4-2", WS, SEMI,
           "Generic 4 cyl base setting", "In-line, missing tooth 90deg BTDC", 90),
    # 2 to 35: reachable through the selection guide.
    layout("Crank 36-1", NC, NC2, NT, "1-3-4-2", WS, SEMI,
           "Ford Zetec/Sigma (EDIS wheel)", I4, 90),
    layout("Crank 36-1", CAM1, NC2, NT, "1-3-4-2", WS, SEQ,
           "Ford Zetec with cam sensor", I4, 90),
    layout("Crank 36-1", CAM1, NC2, NT, "1-3-4-2", COP, SEQ,
           "Aftermarket 36-1 wheel with coil on plug", I4, 90),
    layout("Crank 36-1", NC, NC2, NT, "1-3-4-2", DIST, SEMI,
           "Volvo B230 with 36-1 wheel and distributor", I4, 90),
    layout("Crank 60-2", NC, NC2, NT, "1-3-4-2", WS, SEMI,
           "Opel C20XE/C20LET", I4, 120),
    layout("Crank 60-2", CAM1, NC2, NT, "1-3-4-2", WS, SEQ,
           "Opel C20LET with cam sensor", I4, 120),
    layout("Crank 60-2", CAM1, NC2, NT, "1-3-4-2", COP, SEQ,
           "VW/Audi 1.8T 20V", I4, 120),
    layout("Crank 60-2", CAM1, CAM2, NT, "1-3-4-2", COP, SEQ,
           "Twin cam with intake and exhaust cam sensors", I4, 120),
    layout("Crank 24-1", NC, NC2, NT, "1-3-4-2", WS, SEMI,
           "Aftermarket 24-1 wheel", I4, 90),
    layout("Crank 24-1", CAM1, NC2, NT, "1-3-4-2", COP, SEQ,
           "Aftermarket 24-1 wheel with cam sensor", I4, 90),
    layout("Crank 12-1", NC, NC2, NT, "1-3-4-2", WS, SEMI,
           "Aftermarket 12-1 wheel (small pulley)", I4, 90),
    layout("Crank 12-1", CAM1, NC2, NT, "1-3-4-2", COP, SEQ,
           "Aftermarket 12-1 wheel with cam sensor", I4, 90),
    layout("Crank 36-2", "Cam 3 teeth", NC2, NT, "1-3-4-2", COP, SEQ,
           "Toyota 1ZZ/2ZZ", I4, 90),
    layout("Crank 36-1", NC, NC2, NT, "1-3-2-4", WS, SEMI,
           "Subaru EJ with 36-1 wheel", "Boxer", 90),
    layout("Crank 36-1", CAM1, NC2, NT, "1-3-2-4", COP, SEQ,
           "Subaru EJ with 36-1 wheel and cam sensor", "Boxer", 90),
    layout("Crank 36-1", NC, NC2, NT, "1-4-3-2", WS, SEMI,
           "VW air cooled Type 1/Type 4 with 36-1 wheel", "Boxer", 90),
    layout("Dist 24 teeth", "Cam 1 pulse (CYP)", NC2, "TDC 4 pulses", "1-3-4-2", DIST, SEQ,
           "Honda B16/B18 distributor sensors", "In-line, all sensors in the distributor", 0),
    layout("Crank 60-2", CAM1, NC2, NT, "1-2-4-5-3", DIST, SEQ,
           "Volvo 850/S70/V70 2.3T/2.5T", "In-line 5", 120),
    layout("Crank 60-2", NC, NC2, NT, "1-2-4-5-3", DIST, SEMI,
           "Volvo 5 cyl without cam sensor", "In-line 5, each injector once per rev", 120),
    layout("Crank 36-1", NC, NC2, NT, "1-4-2-5-3-6", WS, SEMI,
           "Ford Cologne V6 2.8/2.9 (EDIS-6)", "V6 60deg", 60),
    layout("Crank 36-1", CAM1, NC2, NT, "1-5-3-6-2-4", WS, SEQ,
           "In-line 6 with 36-1 wheel and cam sensor", I6, 90),
    layout("Crank 60-2", NC, NC2, NT, "1-5-3-6-2-4", WS, SEMI,
           "VW VR6 2.8/2.9 12V", "VR6 15deg", 120),
    layout("Crank 60-2", CAM1, NC2, NT, "1-5-3-6-2-4", WS, SEQ,
           "BMW M50/M52 (wasted spark)", I6, 120),
    layout("Crank 60-2", NC, NC2, NT, "1-5-3-6-2-4", DIST, SEMI,
           "BMW M20/M30 Motronic", I6, 120),
    layout("Crank 36-1", NC, NC2, NT, "1-2-3-4-5-6", WS, SEMI,
           "GM 60deg V6 2.8/3.1/3.4 with 36-1 wheel", "V6 60deg", 90),
    layout("Crank 24-1", NC, NC2, NT, "1-5-3-6-2-4", WS, SEMI,
           "Aftermarket 24-1 wheel in-line 6", I6, 90),
    layout("Crank 36-1", NC, NC2, NT, "1-8-4-3-6-5-7-2", WS, SEMI,
           "Chevrolet small block V8 with 36-1 wheel", V8, 90),
    layout("Crank 36-1", CAM1, NC2, NT, "1-8-4-3-6-5-7-2", WS, SEQ,
           "Chevrolet small block V8 with cam sensor", V8, 90),
    layout("Crank 36-1", NC, NC2, NT, "1-5-4-2-6-3-7-8", WS, SEMI,
           "Ford 289/302 V8 (EDIS-8)", V8, 90),
    layout("Crank 36-1", NC, NC2, NT, "1-3-7-2-6-5-4-8", WS, SEMI,
           "Ford 5.0 HO/351W (EDIS-8)", V8, 90),
    layout("Crank 60-2", CAM1, NC2, NT, "1-5-4-8-6-3-7-2", WS, SEQ,
           "BMW M60/M62 V8", V8, 120),
    layout("Crank 60-2", "Cam 4 teeth", NC2, NT, "1-8-7-2-6-5-4-3", WS, SEQ,
           "GM LS2/LS3 (58X crank)", V8, 120),
    layout("Crank 36-1", CAM1, NC2, NT, "1-5-4-2-6-3-7-8", WS, SEQ,
           "Ford 289/302 V8 with cam sensor", V8, 90),
    layout("Crank 24-1", NC, NC2, NT, "1-8-4-3-6-5-7-2", WS, SEMI,
           "Aftermarket 24-1 wheel V8", V8, 90),
    # 36 to 49: special layouts, only from the list.
    layout("Crank 36-2-2-2", NC, NC2, NT, "1-3-2-4", WS, SEMI,
           "Subaru EJ with original 36-2-2-2 wheel", "Boxer", 90),
    layout("Crank 36-2-2-2", CAM1, NC2, NT, "1-3-2-4", WS, SEQ,
           "Subaru EJ 36-2-2-2 wheel and cam sensor", "Boxer", 90),
    layout("Crank 60-2", NC, NC2, NT, "1-3-4-2", DIST, SEMI,
           "4 cyl with 60-2 wheel and distributor", I4, 120),
    layout("Crank 36-1", CAM1, NC2, NT, "1-2-3", COP, SEQ,
           "In-line 3 cyl with 36-1 wheel", "In-line 3", 90),
    layout("Crank 60-2", CAM1, NC2, NT, "1-3-4-2", COPW, SEQ,
           "60-2 wheel with coils fired in pairs and sequential fuel", I4, 120),
    layout("Crank 36-1", NC, NC2, NT, "1-6-5-4-3-2", WS, SEMI,
           "Buick 3.8 V6 with 36-1 wheel", "V6 90deg", 90),
    layout("Crank 12-1", NC, NC2, NT, "1-5-3-6-2-4", WS, SEMI,
           "Aftermarket 12-1 wheel in-line 6", I6, 90),
    layout("Crank 12-1", NC, NC2, NT, "1-8-4-3-6-5-7-2", WS, SEMI,
           "Aftermarket 12-1 wheel V8", V8, 90),
    layout("Crank 60-2", NC, NC2, NT, "1-3-4-2", COPW, SEMI,
           "60-2 wheel with coil on plug fired in pairs", I4, 120),
    layout("Crank 36-1", NC, NC2, NT, "1-3-4-2", COPW, SEMI,
           "36-1 wheel with coil on plug fired in pairs", I4, 90),
    layout("Crank 36 even", NC, NC2, "TDC 1 pulse", "1-3-4-2", WS, SEMI,
           "Even 36 tooth wheel with separate TDC sensor", I4, 90),
    layout("Crank 60-2", CAM1, CAM2, NT, "1-3-4-2", COP, SEQ,
           "BMW N42/N46 (double VANOS)", I4, 120),
    layout("Crank 36-1", CAM1, NC2, NT, "1-2-4-5-3", DIST, SEQ,
           "Audi 5 cyl 20V with 36-1 wheel", "In-line 5", 90),
    # Last row: of least consequence should a reader stop one line early.
    layout("Crank 36-1", NC, NC2, NT, "1-3-4-2", WS, SEMI,
           "Bench test with a wheel simulator", I4, 90),
]


def engine_config_lines():
    rows = [HEADING]
    for value, row in enumerate(LAYOUTS):
        row = list(row)
        row[0] = str(value)
        rows.append(row)
    return ["Engine_Config=" + "\t".join(r) for r in rows]


# ---------------------------------------------------------------------------
# Presets
# ---------------------------------------------------------------------------

PRESETS = [
    # name, change lists 1 to 3
    ("Wide band AFR control on", "@215,s3", "", ""),
    ("Narrow band AFR control on", "@215,s1,r253", "@226,r0,s23", ""),
    ("AFR control off", "@215,r254", "", ""),
    ("Long term adaptive on", "@185,s32", "", ""),
    ("Long term adaptive off", "@185,r223", "", ""),
    ("Idle control on", "@215,s16", "@7,r0,s90", ""),
    ("Sequential fuel (needs cam sensor)", "@185,s64", "", ""),
    ("Semi sequential fuel", "@185,r191", "", ""),
    ("Rev limit 6500 rpm", "@17,r0,s65", "", ""),
    ("Rev limit 7500 rpm", "@17,r0,s85", "", ""),
]


def preset_lines():
    return ["preset_list=%d<%s>%s$%s!%s\u00a3" % (DATASET_ID, name, a, b, c)
            for name, a, b, c in PRESETS]


# ---------------------------------------------------------------------------
# Configuration file
# ---------------------------------------------------------------------------

# The items of the output and input function lists, in the order of the numbers the box
# stores (at most 9: a selection of 9 or more is mended to 0 on load). A digital function
# also names the thresholds it switches on: none, fan, rpm, analog or both.
PWM_FUNCTIONS = ["Not used", "Boost control", "Idle air valve", "Fuel pump speed", "Water injection",
                 "Nitrous", "Intercooler spray", "Shift light", "Fan speed"]
PWM_LOADS = ["RPM", "Analog 1, AFR", "Analog 2, TPS", "Analog 3, MAP", "Analog 4, Coolant",
             "AUX1 - Battery", "AUX2, Air Temperature", "Analog 11"]
DIGITAL_FUNCTIONS = [("Not used", "none"), ("Fan", "fan"), ("RPM switch", "rpm"),
                     ("Analog switch", "analog"), ("RPM and analog switch", "both"),
                     ("Shift light", "rpm"), ("Fuel pump", "none"), ("Warning light", "none"),
                     ("Boost stage", "both")]
DIGITAL_SENSORS = ["Analog 1, AFR", "Analog 2, TPS", "Analog 3, MAP", "Analog 4, Coolant",
                   "Analog 5, Slave", "Analog 6, Slave", "Analog 7, Slave", "Analog 8, Slave",
                   "AUX1 - Battery"]


def function_lines():
    lines = ["PWM_Function=%s\t" % f for f in PWM_FUNCTIONS]
    lines += ["PWM_Load=%s\t" % f for f in PWM_LOADS]
    lines += ["Digital_Function=%s\t%s\t" % f for f in DIGITAL_FUNCTIONS]
    lines += ["Digital_Sensor=%s\t" % f for f in DIGITAL_SENSORS]
    return lines


def ini_text():
    lines = [
        "comport1=1",
        "Default_interface=Serial",
        "Default_Com_interface=Box_Communication",
        "Language=ENG",
        "Autoguide=1",
        "ComSpeed=0",
        "Autostart_Log=0",
        "Autostart_Live=0",
        "ManualUSBDetect=0",
        "card_data_dir=",
        "Default_Logdir=",
    ]
    lines += ["an_sel%d=%d" % (i + 1, s) for i, s in enumerate(DEFAULT_AN_SEL)]
    lines += [
        "",
        "; Tuning sensors. A settings image stores a sensor by its place in this list",
        "; (the first entry is sensor 1), so keep the order and add new ones at the end.",
        "; Temperature tables assume the thermistor to ground with 2.2 kOhm pull-up to 5 V.",
    ]
    lines += [sens_def_line(s) for s in SENSORS]
    lines += [
        "",
        "; Engine layouts. The first line is the heading. The next is layout value 0.",
    ]
    lines += engine_config_lines()
    lines += [
        "",
        "; Presets: dataset, name in angle brackets, then three change lists.",
    ]
    lines += preset_lines()
    lines += [
        "",
        "; Output and input functions: the items of the lists of the settings pages, in the",
        "; order of the numbers the box stores. A digital function names its thresholds too.",
    ]
    lines += function_lines()
    lines += [""]
    return CRLF.join(lines) + CRLF


# ---------------------------------------------------------------------------
# Settings image
# ---------------------------------------------------------------------------

FUEL_BASE, IGN_BASE, PWM_FUEL_BASE = 256, 653, 46
RPM_STEP = 62.5

# Speed axes in steps of 62.5 rpm; every step is a power of two.
FUEL_RPM_STEPS = [8, 4, 4, 4, 4] + [8] * 14            # 500 .. 8500 rpm, 19
FUEL_LOAD_STEPS = [16] + [8] * 10 + [16] * 5 + [32] * 2  # raw 16 .. 240, 18
IGN_RPM_STEPS = [8, 4, 4, 4, 4] + [8] * 13              # 500 .. 8000 rpm, 18
IGN_LOAD_STEPS = [16] * 8 + [32] * 3                    # raw 16 .. 224, 11

DEAD_TIME_MS = 1.0
# 2.0 litre 4 cylinder, four 600 cc/min injectors, two pulses per cycle:
# ms per bar of manifold pressure at 100 % volumetric efficiency and AFR 14.7
# (0.5 l x 1.189 g/l air / 14.7 / 0.745 g/cc petrol / 10 cc/s / 2).
INJ_MS_PER_BAR = 0.5 * 1.189 / 14.7 / 0.745 / 10.0 * 1000.0 / 2.0
INJECTOR_CC = 600
CYLINDERS = 4


def interp(table, x):
    if x <= table[0][0]:
        return table[0][1]
    for (x0, y0), (x1, y1) in zip(table, table[1:]):
        if x <= x1:
            return y0 + (x - x0) * (y1 - y0) / (x1 - x0)
    return table[-1][1]


VE_BY_RPM = [(500, 0.55), (1000, 0.62), (1500, 0.68), (2000, 0.74), (2500, 0.79),
             (3000, 0.83), (3500, 0.86), (4000, 0.88), (4500, 0.89), (5000, 0.88),
             (5500, 0.86), (6000, 0.84), (6500, 0.81), (7000, 0.78), (7500, 0.75),
             (8000, 0.72), (8500, 0.69)]

# Target AFR over manifold pressure in bar: stoichiometric at part load,
# 12.5 at full load, richer in boost.
AFR_BY_MAP = [(0.66, 14.7), (0.83, 13.6), (1.0, 12.8), (1.17, 12.5), (1.5, 12.5),
              (1.68, 12.2), (1.84, 12.2), (2.01, 11.8)]

IGN_WOT_BY_RPM = [(500, 10), (750, 10), (1000, 12), (1250, 14), (1500, 16),
                  (2000, 19), (2500, 22), (3000, 24), (3500, 26), (4000, 27),
                  (4500, 28), (5000, 29), (5500, 29.5), (6000, 30)]
IGN_VACUUM_PER_BAR = [(750, 0), (1000, 4), (1500, 12), (2000, 20), (2500, 24)]
IGN_RETARD_PER_BAR_BOOST = 10.0
IGN_IDLE_DEG = 15.0
IGN_MIN_DEG, IGN_MAX_DEG = 5.0, 38.0


def running(steps):
    out, s = [], 0
    for b in steps:
        s = min(255, s + b)
        out.append(s)
    return out


def map_bar(raw):
    return forward(sensor(SENS_MAP), raw)


def fuel_ms(bar, rpm):
    ve = interp(VE_BY_RPM, rpm) * (0.75 + 0.25 * min(bar, 1.0))
    return DEAD_TIME_MS + INJ_MS_PER_BAR * bar * ve * 14.7 / interp(AFR_BY_MAP, bar)


def fuel_byte(ms):
    b = round((ms - 1.0) / 0.06)
    if 1 <= b < 25 and ms < 2.5:
        return b
    return min(255, round(ms / 0.1))


def ign_deg(bar, rpm):
    if rpm <= 1000 and bar <= 0.67:
        return IGN_IDLE_DEG
    deg = interp(IGN_WOT_BY_RPM, rpm)
    if bar < 1.0:
        deg += interp(IGN_VACUUM_PER_BAR, rpm) * (1.0 - bar)
    else:
        deg -= IGN_RETARD_PER_BAR_BOOST * (bar - 1.0)
    return min(IGN_MAX_DEG, max(IGN_MIN_DEG, deg))


def put_block(img, base, rpm_steps, load_steps, cell):
    cols, rows = len(rpm_steps), len(load_steps)
    img[base] = cols
    img[base + 1:base + 1 + cols] = rpm_steps
    img[base + cols + 1] = rows
    img[base + cols + 2:base + cols + 2 + rows] = load_steps
    start = base + cols + rows + 2
    rpms = [s * RPM_STEP for s in running(rpm_steps)]
    loads = [map_bar(s) for s in running(load_steps)]
    for r, bar in enumerate(loads):
        for c, rpm in enumerate(rpms):
            img[start + r * cols + c] = cell(bar, rpm)
    return start + rows * cols  # first byte after the block


def bits(text):
    return int(text, 2)


def rpm_limit_byte(rpm):
    return rpm // 50 - 65


def build_image():
    img = [0] * IMAGE_SIZE
    clt, iat = sensor(SENS_CLT), sensor(SENS_IAT)
    tps, mapx, afr = sensor(SENS_TPS), sensor(SENS_MAP), sensor(SENS_AFR)

    img[1] = 0                          # master box
    img[3] = bits("10001000")
    img[5] = bits("00010010")
    img[6] = 0                          # layout value 0: generic 4 cyl, 36-1
    img[7] = 90                         # idle 900 rpm
    img[8], img[9], img[10] = 10, 5, 0  # idle PID, used once idle control is on
    img[11] = bits("00010101")
    img[12] = reverse(tps, 2.0)         # idle mode below 2 % throttle
    img[13] = int(IGN_IDLE_DEG / 0.2)   # idle ignition
    img[14] = int(IGN_IDLE_DEG / 0.2)   # cranking ignition, the strobe check value
    img[16] = 2
    img[17] = rpm_limit_byte(6500)
    img[18] = 4                         # 36-1 gap at 90 deg: 51 deg BTDC ~ 4 teeth on
    img[20] = 10                        # fuel start, 2 x 51 deg / 10 deg a tooth
    img[21] = 15                        # dwell 3.0 ms
    img[23] = reverse(mapx, 2.0)        # fuel cut above 2.0 bar absolute
    for a in (24, 25, 26, 27, 28, 29, 31, 32, 33, 34):
        img[a] = 128                    # no transient trim
    img[30] = reverse(clt, 95.0)        # fan on at 95 C
    img[35] = reverse(tps, 5.0)         # idle ignition fades out by 5 % throttle
    img[37] = 26                        # +10 % start-up fuel, warm engine
    img[38] = 24                        # for 5 s after cranking
    img[40], img[41], img[42], img[43] = 128, 1, 1, 1
    img[44] = 5

    # PWM2 extra fuel: one column, five rows over PWM2 duty, all 0.0.
    img[PWM_FUEL_BASE] = 1
    img[PWM_FUEL_BASE + 2] = 5
    img[49:54] = [32, 32, 32, 64, 64]
    img[54:59] = [128] * 5

    img[79] = round(DEAD_TIME_MS / 0.0032) - 255
    img[80], img[81] = 0, 0                           # no speed sensor
    total_cc = INJECTOR_CC * CYLINDERS
    img[82], img[83] = total_cc & 255, total_cc >> 8  # total injector flow
    img[85] = 255                                     # 2nd rev limit off
    img[86], img[87], img[88] = 5, 51, 4              # acceleration fuel
    img[92], img[93], img[94], img[95] = 64, 200, 192, 200   # PWM1 comp. 100 %
    img[96], img[97], img[98], img[99] = 64, 128, 192, 128   # no ignition comp.

    # 100..120 and 133..153: 2nd fuel tables as added time, all 0 ms.
    for i in range(17):                 # AFR control targets over 0-5 V of MAP
        img[154 + i] = reverse(afr, interp(AFR_BY_MAP, map_bar(i * 255 / 16)))
    img[171] = reverse(clt, 0.0)        # cold engine at or below 0 C
    img[172] = reverse(clt, 70.0)       # warm engine from 70 C
    img[173] = 90                       # choke fuel 35 %
    img[174] = bits("00010011")
    img[175] = 0                        # fuel 19x18, 2nd fuel as added time, ign 18x11
    img[179], img[180] = 100, 100
    img[183], img[184] = 200, 20
    img[185] = 0                        # semi sequential, no adaptation
    img[186], img[187], img[188] = 0, 0, 0
    img[189], img[190] = 20, 128
    img[191:212] = [128] * 21           # 1st ignition compensation 0 deg
    img[212] = reverse(clt, 60.0)       # AFR control from 60 C
    img[213] = 96                       # up to 6000 rpm
    img[215] = bits("00000011")         # AFR control on, wide band
    img[216] = 0
    img[218] = 255                      # launch off
    img[219] = 3                        # 0.3 ms/V below 13.5 V
    img[220] = reverse(iat, 0.0)
    img[221] = 128 + 31                 # +6 % fuel in cold air
    img[222] = reverse(iat, 50.0)
    img[223] = 128 - 31                 # -6 % fuel in hot air
    img[224], img[225] = 20, 30         # AFR control idle speed, 30 s delay
    img[226] = 23                       # 0.45 V for a narrow band sensor
    img[227] = 255
    img[228] = reverse(mapx, 0.25)      # no AFR control on overrun
    img[229] = 255                      # AFR supervising off
    for out in range(4):
        a = 230 + 5 * out
        img[a] = 0
        img[a + 1], img[a + 2] = 255, 255
    img[255] = DATASET_ID

    end = put_block(img, FUEL_BASE, FUEL_RPM_STEPS, FUEL_LOAD_STEPS,
                    lambda bar, rpm: fuel_byte(fuel_ms(bar, rpm)))
    assert end <= 643
    end = put_block(img, IGN_BASE, IGN_RPM_STEPS, IGN_LOAD_STEPS,
                    lambda bar, rpm: round(ign_deg(bar, rpm) / 0.2))
    assert end <= 884

    img[884:896] = DEFAULT_AN_SEL
    # 896..979: PWM tables 0 % until an output is assigned.
    limits = [0, 255, 0, 255, 0, 255, 255, 0, 0, 255, 0, 255, 0, 255, 0, 255, 255]
    img[980:997] = limits
    assert len(img) == IMAGE_SIZE and all(0 <= b <= 255 for b in img)
    return img


COMMENT = [
    "Quorlen base settings: 4 cylinder - 36-1 wheel - wasted spark - semi sequential fuel.",
    "2.5 bar Bosch MAP - 2.0 litre with 4 x 600 cc/min injectors - AFR control on a 10-20 wide band.",
    "Start point only - check every value before starting an engine.",
]


def qxs_bytes(img):
    text = "".join(" %d %s" % (b, CRLF) for b in img)
    text += CRLF.join(COMMENT) + CRLF
    return text.encode("ascii")


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "..", "data")
    with open(os.path.join(out, "RZ400_800M3.ini"), "wb") as f:
        f.write(ini_text().encode("utf-8"))
    with open(os.path.join(out, "RZ400_800M3_Default_Settings.qxs"), "wb") as f:
        f.write(qxs_bytes(build_image()))


if __name__ == "__main__":
    main()
