#!/usr/bin/env python3
"""Writes the default log settings the program ships:
RZ400_800M3_Default_Log_Settings.qxl, an ordinary log file without rows whose
settings and sensors are what a new log starts from.

    python3 tools/datagen/make_log_settings.py [output-dir]

The signal labels of the stand-alone layout (dataset IDs from 200) live only
here. A row of that layout carries 42 fields: the RPM, columns 2 to 39, and the
three status bytes in columns 40 to 42. Columns 40 to 74 of the calculated
signals share their numbers with those status bytes and the per-bit columns, so
signals 39 to 41 carry the status sensors (which spread the bits to columns 51
to 74) while their columns hold smoothed RPM, power and torque.

The output is deterministic. The program reads it and writes it back byte for
byte: its unit tests check that.
"""

import math
import os
import sys

CRLF = "\r\n"
TAB = "\t"


def num(v):
    """A number as the program writes one: no trailing zeros, a point."""
    if float(v) == int(v):
        return str(int(v))
    text = "%.15g" % v
    return text


# ---------------------------------------------------------------------------
# Log sensors: the built-in ones first, in the program's order, then the ones
# the stand-alone box's columns need.
# ---------------------------------------------------------------------------

LINEAR = [
    ("RPM", "Linear", 1000, 0, 0, 10, "rpm", 0),
    ("Ignition", "Linear", 0.2, -25.4, 0, 255, "Deg", 1),
    ("Fuel", "Linear", 0.204, 0, 0, 255, "ms", 1),
    ("Analog_0-5V", "Linear", 0.01953125, 0, 0, 255, "V", 2),
    ("Analog_0-100%", "Linear", 0.390625, 0, 0, 255, "%", 0),
    ("AD_0-255", "Linear", 1, 0, 0, 255, "AD", 0),
    ("Pos_0-32", "Linear", 0.125, 0, 0, 255, "Pos", 0),
    ("Power", "Linear", 1, 0, 0, 255, "AD", 0),
    ("Torque", "Linear", 1, 0, 0, 255, "AD", 0),
    ("Speed_kmph", "Linear", 1, 0, 0, 255, "AD", 0),
    ("Speed_mph", "Linear", 1.652, 0, 0, 255, "AD", 0),
    ("Accel", "Linear", 1, 0, 0, 255, "AD", 0),
    ("MPX 2.5bar", "Linear", 0.0098039, 0.09, 0, 255, "bar", 2),
    ("50%_Fuel_Calibration", "Linear", 0.408, 0, 0, 255, "2xms", 1),
]


def points(head, rest):
    return head + [rest] * (33 - len(head))


TABLES = [
    ("MPX_Tab", points([0, 0, 0.24, 0.32, 0.4, 0.48, 0.55, 0.63, 0.71, 0.79, 0.87,
                        0.94, 1.02, 1.1, 1.18, 1.26, 1.34, 1.41, 1.49, 1.57, 1.65,
                        1.73, 1.8, 1.88, 1.96, 2.04, 2.12, 2.19, 2.27, 2.35, 2.43,
                        2.5, 2.5], 2.5), "bar", 2),
    ("Smart_throttle", points([0, 0, 0, 0, 7.3, 21.8, 36.4, 50.9, 65.5, 80, 94.5],
                              100), "%", 1),
    ("WB_Lambda", points([0.68] * 10 + [0.72, 0.758, 0.79, 0.83, 0.88, 0.935, 1,
                                        1.128, 1.273], 1.4), "lambda", 2),
]


def ntc_points():
    """Temperature of an NTC to ground with 2.2 kOhm to 5 V (2.5 kOhm at 20 C,
    beta 3500) at raw 0, 8 .. 256; the two ends continue the slope beside them."""
    pts = []
    for i in range(33):
        x = 8 * i / 255.0
        if 0 < x < 1:
            r = 2200.0 * x / (1 - x)
            t = 1 / (1 / 293.15 + math.log(r / 2500.0) / 3500.0) - 273.15
            pts.append(round(t))
        else:
            pts.append(None)
    pts[0] = 2 * pts[1] - pts[2]
    pts[32] = 2 * pts[31] - pts[30]
    return pts


EXTRA_LINEAR = [
    ("Ign_corr", "Linear2c", 0.2, 0, 0, 255, "Deg", 1),
    ("Percent_2c", "Linear2c", 0.5, 0, 0, 255, "%", 1),
    ("Lambda_target", "Linear", 0.01, 0, 0, 255, "lambda", 2),
    ("Gear", "Linear", 1, 0, 0, 255, "gear", 0),
    ("Battery_0-20V", "Linear", 0.0784314, 0, 0, 255, "V", 1),
    ("Fuel_press", "Linear", 0.02, 0, 0, 255, "bar", 2),
    ("RPM_bin", "Linear", 1, 0, 0, 16000, "rpm", 0),
    # The status bytes. Their columns hold the smoothed RPM, the power and the
    # torque once the calculation has run, so the first one carries "rpm".
    ("Status_byte_1", "Status1", 1, 0, 0, 255, "rpm", 0),
    ("Status_byte_2", "Status2", 1, 0, 0, 255, "bit", 0),
    ("Status_byte_3", "Status3", 1, 0, 0, 255, "bit", 0),
]
EXTRA_TABLES = [("Temp_NTC", ntc_points(), "C", 0)]

# The built-in sensors keep their places; the others follow them.
SENSORS = [s[0] for s in LINEAR] + [t[0] for t in TABLES] + \
    [s[0] for s in EXTRA_LINEAR] + [t[0] for t in EXTRA_TABLES]


def linear_line(name, kind, gain, offset, lo, hi, unit, dec):
    fields = [name, kind, num(gain), num(offset), num(lo), num(hi), unit, num(dec)]
    return "Log_Sens_Def=" + "".join(f + TAB for f in fields)


def table_line(name, pts, unit, dec):
    fields = [name, "Tab"] + [num(p) for p in pts] + [unit, num(dec)]
    return "Log_Sens_Def=" + "".join(f + TAB for f in fields)


def sensor_lines():
    return [linear_line(*s) for s in LINEAR] + [table_line(*t) for t in TABLES] + \
        [linear_line(*s) for s in EXTRA_LINEAR] + [table_line(*t) for t in EXTRA_TABLES]


# ---------------------------------------------------------------------------
# Signals: label, sensor (None: no sensor), shown on the chart.
# ---------------------------------------------------------------------------

SIGNALS = [
    ("RPM", "RPM", 1),
    ("Ignition", "Ignition", 0),
    ("Ign. correction", "Ign_corr", 0),
    ("Fuel", "Fuel", 0),
    ("Fuel correction", "Percent_2c", 0),
    ("Lambda target", "Lambda_target", 0),
    ("Lambda trim", "Percent_2c", 0),
    ("Idle valve", "Analog_0-100%", 0),
    ("PWM 1", "Analog_0-100%", 0),
    ("PWM 2", "Analog_0-100%", 0),
    ("Gear", "Gear", 0),
    ("AN1 Lambda", "WB_Lambda", 1),
    ("AN2 Throttle", "Analog_0-100%", 0),
    ("AN3 MAP", "MPX 2.5bar", 1),
    ("AN4 Coolant", "Temp_NTC", 0),
    ("AN5", "Analog_0-5V", 0),
    ("AN6", "Analog_0-5V", 0),
    ("AN7", "Analog_0-5V", 0),
    ("AN8", "Analog_0-5V", 0),
    ("Battery", "Battery_0-20V", 0),
    ("Air temp", "Temp_NTC", 0),
    ("AN11", "Analog_0-5V", 0),
    ("AN12", "Analog_0-5V", 0),
    ("Digital inputs", "AD_0-255", 0),
    ("AN1 (slave)", "WB_Lambda", 0),
    ("AN2 (slave)", "Analog_0-100%", 0),
    ("AN3 (slave)", "MPX 2.5bar", 0),
    ("AN4 (slave)", "Temp_NTC", 0),
    ("Knock", "AD_0-255", 0),
    ("Engine on count", "AD_0-255", 0),
    ("Boost target", "MPX 2.5bar", 0),
    ("Fuel pressure", "Fuel_press", 0),
    ("Idle ign. correction", "AD_0-255", 0),
    ("Error count", "AD_0-255", 0),
    ("Option 35", "AD_0-255", 0),
    ("Option 36", "AD_0-255", 0),
    ("Option 37", "AD_0-255", 0),
    ("Option 38", "AD_0-255", 0),
    ("Option 39", "AD_0-255", 0),
    ("RPM smoothed", "Status_byte_1", 0),
    ("Power", "Status_byte_2", 1),
    ("Torque", "Status_byte_3", 0),
    ("Speed", None, 0),
    ("Acceleration", None, 0),
    ("Fuel duty cycle", None, 0),
    ("Delta AE", None, 0),
    ("Fuel economy", None, 0),
    ("AD1_BIN", None, 0),
    ("AD2_BIN", None, 0),
    ("AD3_BIN", None, 0),
]
STATUS_BITS = [
    "Spare 1.0", "Spare 1.1", "Idle", "Closed loop", "Engine running",
    "Rev limit", "Fuel cut", "Launch",
    "Fuel pump", "Fan", "AC", "Knock active", "Cam sync", "Shift light",
    "Warm-up", "After-start",
    "Box error", "Card", "Slave OK", "Dig. in 1", "Dig. in 2", "Dig. in 3",
    "Logging", "Full load",
]
SIGNALS += [(name, None, 0) for name in STATUS_BITS]
assert len(SIGNALS) == 74, len(SIGNALS)


def log_def_lines():
    lines = []
    for i, (label, sensor, view) in enumerate(SIGNALS):
        place = SENSORS.index(sensor) if sensor else i
        # A signal without a sensor stands with its own number, which the reader
        # takes for a sensor's place: below the sensor count that would choose a
        # sensor after all, so every raw column has one.
        assert sensor or i >= len(SENSORS), label
        fields = [label, str(place), sensor or "", str(view), "0", "1",
                  "1" if place != 0 else "0", label]
        lines.append("Log_Def%d=" % i + "".join(f + TAB for f in fields))
    return lines


def settings_lines():
    def line(key, *fields):
        return key + "=" + "".join(str(f) + TAB for f in fields)
    lines = [
        line("Log_File_Name", "RZ400_800M3_Default_Log_Settings.qxl"),
        line("Log_Date", ""),
        line("Log_Time", ""),
        line("Log_Length", "0.0 s"),
        "Log_Description=Enter you comments here;",
        line("Log_File_Version", "4.0"),
    ]
    lines += log_def_lines()
    lines += [
        line("Log_Scale", "Auto", "Auto", "Auto", "Auto", ""),
        line("Log_Zoom", 1, 1),
        # km/h per 1000 rpm in each gear; the calculation uses third.
        line("Log_Gearing", 8, 13, 18.5, 24, 30, 36, 3, 135, 3647),
        line("Log_Speed_Unit", "km/h"),
        line("Log_Weight_Unit", "kg"),
        line("Log_Torque_Unit", "Nm"),
        line("Log_Hp", 1200, 20, 500, "", 0.32, 2, 1.225, 10, 12),
        line("Log_AutoSave", 1, "QXLog-"),
        line("Log_SettingsInLog", 1),
        line("Log_To_File_Only", 0),
        line("Log_Time_Interval", 20, 0.2),
        line("Log_Signal_Smoothing", 2, 2, 0, 3000, 100, 5, 0.7, -10),
        line("Log_Views", 0, 0, 0, 0, 0, 0),
        line("Log_Start_String", "La"),
    ]
    return lines


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "..", "data")
    settings = "[log_settings]" + CRLF + "".join(l + CRLF for l in settings_lines()) + "[end log_settings]"
    sensors = "[log_sens_def]" + CRLF + "".join(l + CRLF for l in sensor_lines()) + "[end log_sens_def]"
    readable = "[readable_settings]" + CRLF + "[end readable_settings]"
    data = "[log_data]" + CRLF + "La" + CRLF + "[end log_data]" + CRLF
    dataset = "[log_dataset]" + CRLF + "[end log_dataset]"
    text = CRLF.join([settings, sensors, readable, data, dataset])
    with open(os.path.join(out, "RZ400_800M3_Default_Log_Settings.qxl"), "wb") as f:
        f.write(text.encode("ascii"))


if __name__ == "__main__":
    main()
