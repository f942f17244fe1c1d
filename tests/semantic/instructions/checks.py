"""The instruction checks as data: reading the *.checks files.

A file holds checks separated by their "check" lines; "#" starts a comment
(except in #x followed by a float's 16 hex digits).

    check TITLE
      code INSTRUCTION          one listing line each, in order; the first
                                at 10000000 (<node>), each next 4 bytes on;
                                branch targets are written <node+OFFSET>
      pre  NAME=VALUE ...       the state before the code that matters
      post NAME=VALUE ...       the state after it, worked out by hand

NAME and VALUE:
    r0..r31, lr, ctr     32 bits: decimal (negative allowed) or 0x hexadecimal
    ca, so, cr00..cr31   0 or 1 (cr00 is the condition register's bit 0)
    crf0..crf7           a field's four bits LT GT EQ SO, e.g. crf0=0100
    cr                   the whole condition register, 32 bits
    f0..f31              a double: decimal (exact only), 0x hexadecimal
                         floating point (0x1.8p-3), inf, -inf, nan (quiet),
                         or its 64 bits as #x followed by 16 hex digits;
                         after the code, nan means any NaN
    mem[ADDRESS]         bytes from ADDRESS on, as hex digits (mem[0x20]=00ff)
A post VALUE free(A,B) says the value is deliberately unconstrained: each of
A and B must be possible.
"""

import math
import re
import struct
from fractions import Fraction

LISTING_BASE = 0x10000000


class CheckError(Exception):
    """A malformed check file, with its place."""


class Value:
    """One state item: its kind (word, bit, float, bytes; field only while
    reading, made into four bits) and contents."""

    def __init__(self, kind, contents):
        self.kind = kind          # "word", "bit", "float", "bytes", "field"
        self.contents = contents  # int (words, bits, float bits), or list of ints (bytes); None: any NaN


class Item:
    """NAME=VALUE of a pre or post line, with its alternatives when free."""

    def __init__(self, name, address, value, alternatives=None):
        self.name = name              # "r3", "cr02", "f1", "mem", ...
        self.address = address        # for mem
        self.value = value            # a Value, or None when free
        self.alternatives = alternatives or []

    @property
    def is_free(self):
        return self.value is None


class Check:
    def __init__(self, path, line, title):
        self.path = path
        self.line = line
        self.title = title
        self.code = []
        self.pre = []
        self.post = []

    def place(self):
        return "%s:%d" % (self.path, self.line)

    def listing(self):
        """The listing lines velcor reads."""
        lines = []
        for index, instruction in enumerate(self.code):
            offset = 4 * index
            symbol = "<node>" if offset == 0 else "<node+%d>" % offset
            lines.append("%08x: %s: %s" % (LISTING_BASE + offset, symbol, instruction))
        return lines


def _parse_word(text):
    try:
        number = int(text, 0)
    except ValueError:
        raise ValueError("%s is not a number" % text)
    if number < -(1 << 31) or number >= (1 << 32):
        raise ValueError("%s does not fit 32 bits" % text)
    return number & 0xFFFFFFFF


def double_bits(number):
    return struct.unpack(">Q", struct.pack(">d", number))[0]


def _parse_float(text, after):
    if after and text == "nan":
        return None
    if text == "nan":
        return 0x7FF8000000000000
    if re.fullmatch(r"#x[0-9a-fA-F]{16}", text):
        return int(text[2:], 16)
    if text in ("inf", "+inf", "-inf"):
        return double_bits(-math.inf if text[0] == "-" else math.inf)
    if re.fullmatch(r"[-+]?0x[0-9a-fA-F.]+p[-+]?\d+", text):
        return double_bits(float.fromhex(text))
    number = float(text)
    # A decimal that no double holds exactly would hide a rounding in the test.
    if math.isinf(number) or Fraction(text) != Fraction(number):
        raise ValueError("%s is not exactly a double" % text)
    return double_bits(number)


def _parse_value(name, text, after):
    if name in ("ca", "so") or re.fullmatch(r"cr\d\d", name):
        if text not in ("0", "1"):
            raise ValueError("a bit is 0 or 1")
        return Value("bit", int(text))
    if re.fullmatch(r"crf[0-7]", name):
        if not re.fullmatch(r"[01]{4}", text):
            raise ValueError("a condition field is four bits (LT GT EQ SO)")
        return Value("field", int(text, 2))
    if name == "mem":
        if not re.fullmatch(r"([0-9a-fA-F]{2})+", text):
            raise ValueError("memory is written as pairs of hex digits")
        return Value("bytes", [int(text[i:i + 2], 16) for i in range(0, len(text), 2)])
    if re.fullmatch(r"f\d+", name):
        return Value("float", _parse_float(text, after))
    return Value("word", _parse_word(text))


_NAME = re.compile(r"(r\d+|f\d+|cr\d\d|crf[0-7]|cr|ca|so|lr|ctr|mem\[(0x[0-9a-fA-F]+|\d+)\])$")


def _parse_item(text, after):
    name, equals, value_text = text.partition("=")
    match = _NAME.match(name)
    if not equals or not match:
        raise ValueError("expected NAME=VALUE, not %s" % text)
    address = None
    if name.startswith("mem"):
        address = _parse_word(match.group(2))
        name = "mem"
    elif re.fullmatch(r"[rf]\d+", name) and int(name[1:]) > 31:
        raise ValueError("no register %s" % name)
    elif re.fullmatch(r"cr\d\d", name) and int(name[2:]) > 31:
        raise ValueError("no condition bit %s" % name)
    if name == "cr":
        return [Item("cr%02d" % bit, None, Value("bit", (_parse_word(value_text) >> (31 - bit)) & 1))
                for bit in range(32)]
    free = re.fullmatch(r"free\(([^,()]+),([^,()]+)\)", value_text)
    if free:
        if not after:
            raise ValueError("only a value after the code can be free")
        alternatives = [_parse_value(name, free.group(k), False) for k in (1, 2)]
        if alternatives[0].contents == alternatives[1].contents:
            raise ValueError("a free value needs two different possibilities")
        if name == "mem" and len(alternatives[0].contents) != len(alternatives[1].contents):
            raise ValueError("the possibilities of free bytes need the same length")
        return [Item(name, address, None, alternatives)]
    value = _parse_value(name, value_text, after)
    if value.kind == "field":
        field = int(name[3])
        return [Item("cr%02d" % (4 * field + k), None, Value("bit", (value.contents >> (3 - k)) & 1))
                for k in range(4)]
    return [Item(name, address, value)]


# "#" starts a comment, except in a float's bits (#x3ff0000000000000).
_COMMENT = re.compile(r"#(?!x[0-9a-fA-F]{16})")


def read_checks(path):
    checks = []
    with open(path, encoding="utf-8") as source:
        for number, raw in enumerate(source, 1):
            text = _COMMENT.split(raw, 1)[0].strip()
            if not text:
                continue
            keyword, _, rest = text.partition(" ")
            rest = rest.strip()
            try:
                if keyword == "check":
                    if not rest:
                        raise ValueError("a check needs a title")
                    checks.append(Check(path, number, rest))
                    continue
                if not checks:
                    raise ValueError("%s before the first check" % keyword)
                check = checks[-1]
                if keyword == "code":
                    if not rest:
                        raise ValueError("an empty code line")
                    check.code.append(rest)
                elif keyword in ("pre", "post"):
                    items = [item for word in rest.split() for item in _parse_item(word, keyword == "post")]
                    (check.pre if keyword == "pre" else check.post).extend(items)
                else:
                    raise ValueError("unknown keyword %s" % keyword)
            except ValueError as error:
                raise CheckError("%s:%d: %s" % (path, number, error))
    for check in checks:
        if not check.code or not check.post:
            raise CheckError("%s: check without code or without post-state" % check.place())
    return checks
