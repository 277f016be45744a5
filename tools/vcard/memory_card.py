#!/usr/bin/python3
"""A synchronous memory card (SLE4442 or SLE4428) in the virtual reader of vpcd.

It answers the storage-card commands that PC/SC readers of these cards accept (class FF:
select card type, read, write, present and change the code, read the error counter, read
and write the protection bits) and behaves like the chip behind them: a write without the
code presented, or to a protected byte, is taken by the reader and silently ignored by the
card; every wrong code clears one bit of the error counter until the card is locked.

The memory lives in FILE (256 or 1024 bytes, plain binary, so a test can look at it), the
code, the error counter and the protection bits in FILE.security (JSON). Both are rewritten
through a temporary file on every change, so a killed card loses nothing.

    memory_card.py --file F --type SLE4442|SLE4428 [--pin HEX] [--counter N] [--port P]
"""

import argparse
import json
import logging
import os
import sys
import time
import types

# The package's relay loop lives beside the cryptography of its other cards, which a memory
# card never uses; a stand-in keeps it importable without that library.
sys.path.insert(0, "/usr/lib/python3/site-packages/virtualsmartcard")
sys.modules.setdefault("virtualsmartcard.CryptoUtils", types.ModuleType("virtualsmartcard.CryptoUtils"))
from virtualsmartcard.VirtualSmartcard import SmartcardOS, VirtualICC  # noqa: E402

KINDS = {
    # size, code length, full error counter, protected span (bytes with a protect bit),
    # the card type byte of "select card type", ATR as the reader reports it
    "SLE4442": dict(size=256, code=3, full=0x07, protected=32, select=0x06,
                    atr=bytes.fromhex("3B04A2131091")),
    "SLE4428": dict(size=1024, code=2, full=0xFF, protected=1024, select=0x05,
                    atr=bytes.fromhex("3B0492231091")),
}

OK = b"\x90\x00"
WRONG_LENGTH = b"\x67\x00"
NOT_ALLOWED = b"\x69\x86"  # no card type selected
SECURITY = b"\x69\x82"     # change of code without the code presented
WRONG_TYPE = b"\x6A\x81"   # the reader was told the wrong card type
OUT_OF_RANGE = b"\x6B\x00"
NO_INS = b"\x6D\x00"
NO_CLA = b"\x6E\x00"


def replace_file(path, data):
    tmp = path + ".new"
    with open(tmp, "wb") as f:
        f.write(data)
        f.flush()
        os.fsync(f.fileno())
    os.replace(tmp, path)


class MemoryCardOS(SmartcardOS):
    def __init__(self, path, kind, pin, counter):
        self.path = path
        self.kind = kind
        self.k = KINDS[kind]
        self.security_path = path + ".security"
        size = self.k["size"]
        if os.path.exists(path):
            with open(path, "rb") as f:
                self.memory = bytearray(f.read()[:size].ljust(size, b"\xff"))
        else:
            self.memory = bytearray(b"\xff" * size)
        if os.path.exists(self.security_path):
            with open(self.security_path) as f:
                sec = json.load(f)
            self.pin = bytes.fromhex(sec["pin"])
            self.counter = int(sec["counter"])
            self.protect = bytearray.fromhex(sec["protect"])
        else:
            self.pin = bytes.fromhex(pin) if pin else b"\xff" * self.k["code"]
            self.counter = self.k["full"] if counter is None else counter
            # One bit a byte, 1 = writable, byte 0 in bit 0 of the first byte.
            self.protect = bytearray(b"\xff" * (self.k["protected"] // 8))
        if len(self.pin) != self.k["code"]:
            raise SystemExit("the code of an %s has %d bytes" % (kind, self.k["code"]))
        self.save()
        self.powerDown()

    def save(self):
        replace_file(self.path, bytes(self.memory))
        sec = dict(type=self.kind, pin=self.pin.hex().upper(), counter=self.counter,
                   protect=self.protect.hex().upper())
        replace_file(self.security_path, json.dumps(sec, indent=1).encode())

    # --- the chip ---------------------------------------------------------------------

    def getATR(self):
        return self.k["atr"]

    def powerUp(self):
        self.selected = False
        self.unlocked = False

    def powerDown(self):
        self.selected = False
        self.unlocked = False

    def reset(self):
        self.powerUp()

    def writable(self, address):
        if address >= self.k["protected"]:
            return True
        return bool(self.protect[address // 8] >> (address % 8) & 1)

    def execute(self, msg):
        apdu = bytes(msg)
        if len(apdu) < 4:
            return WRONG_LENGTH
        cla, ins, p1, p2 = apdu[:4]
        body = apdu[5:] if len(apdu) > 5 else b""
        lc_or_le = apdu[4] if len(apdu) > 4 else 0
        if cla != 0xFF:
            return NO_CLA
        if ins == 0xA4:
            if len(body) != 1 or lc_or_le != 1:
                return WRONG_LENGTH
            if body[0] != self.k["select"]:
                return WRONG_TYPE
            self.selected = True
            return OK
        if not self.selected:
            return NOT_ALLOWED
        address = (p1 << 8) | p2
        size = self.k["size"]
        if ins == 0xB0:  # read memory
            length = lc_or_le or 256
            if address + length > size:
                return OUT_OF_RANGE
            return bytes(self.memory[address:address + length]) + OK
        if ins == 0xB1:  # error counter and the code's dummy bytes
            return bytes([self.counter]) + b"\x00" * self.k["code"] + OK
        if ins == 0xB2:  # protection memory: all of it (SLE4442), or page p1 of 32 bytes
            if self.kind == "SLE4442":
                return bytes(self.protect) + OK
            if p1 > 3:
                return OUT_OF_RANGE
            return bytes(self.protect[p1 * 32:p1 * 32 + 32]) + OK
        if ins in (0xD0, 0xD1):  # write memory; with D1 also protect what was written
            if len(body) != lc_or_le or address + len(body) > size:
                return OUT_OF_RANGE if len(body) == lc_or_le else WRONG_LENGTH
            if self.unlocked:
                for i, value in enumerate(body):
                    a = address + i
                    if not self.writable(a):
                        continue
                    self.memory[a] = value
                    if ins == 0xD1 and a < self.k["protected"]:
                        self.protect[a // 8] &= ~(1 << (a % 8)) & 0xFF
                self.save()
            return OK
        if ins == 0x20:  # present the code
            if len(body) != self.k["code"]:
                return WRONG_LENGTH
            if self.counter == 0:
                return b"\x90\x00"
            if body == self.pin:
                self.counter = self.k["full"]
                self.unlocked = True
            else:
                # The chip clears the highest set bit of its counter before it compares.
                self.counter &= ~(1 << (self.counter.bit_length() - 1))
                self.unlocked = False
            self.save()
            return bytes([0x90, self.counter])
        if ins == 0xD2:  # change the code
            if len(body) != self.k["code"]:
                return WRONG_LENGTH
            if not self.unlocked:
                return SECURITY
            self.pin = bytes(body)
            self.save()
            return OK
        return NO_INS


class MemoryCardICC(VirtualICC):
    """The package's relay to vpcd, with our card instead of a generated file system."""

    def __init__(self, os_, host, port):
        self.os = os_
        self.type = os_.kind
        self.host = host
        self.port = port
        # pcscd may still be loading the reader's driver: keep knocking for a while.
        deadline = time.monotonic() + 10
        while True:
            try:
                self.sock = self.connectToPort(host, port)
                break
            except OSError:
                if time.monotonic() > deadline:
                    raise SystemExit("no virtual reader listens on %s:%d (is pcscd with vpcd running?)"
                                     % (host, port))
                time.sleep(0.05)
        self.sock.settimeout(None)
        self.server_sock = None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--file", required=True)
    parser.add_argument("--type", choices=sorted(KINDS), default="SLE4442")
    parser.add_argument("--pin", help="the code as hex digits (default: all FF)")
    parser.add_argument("--counter", type=int, help="error counter to start from")
    parser.add_argument("--host", default="127.0.0.1")
    parser.add_argument("--port", type=int, default=0x8C7B)
    parser.add_argument("--verbose", action="store_true")
    a = parser.parse_args()
    logging.basicConfig(level=logging.INFO if a.verbose else logging.WARNING,
                        format="vcard: %(message)s")
    card = MemoryCardOS(a.file, a.type, a.pin, a.counter)
    icc = MemoryCardICC(card, a.host, a.port)
    print("card %s in the reader on port %d" % (a.type, a.port), flush=True)
    try:
        icc.run()
    except KeyboardInterrupt:
        pass


if __name__ == "__main__":
    main()
