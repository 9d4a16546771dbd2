#!/usr/bin/env python3
"""genlog.py N > LOG: writes an accounting log of N job records, 20 attributes each, as a stream.

12 strings of 8 to 40 bytes, 5 ints, 2 times, 1 int with two values; --attributes and --values change
these numbers, and --documents gives each job documents of 6 attributes.  The access list admits
everybody.  The same arguments give the same bytes.  genlog.py --oids N writes an OID table of the
attributes 1 to N instead.
"""
import argparse
import random
import struct
import sys

INTEGER, STRING, TIME = 1, 14, 48
OID = "1.3.6.1.4.1.99999.7.2."  # OID of an attribute without its number
VARIANTS = 257  # prepared values of each attribute
WORDS = "plain duplex A4 letter heavy queue alpha bravo delta annual report draft north south".split()

ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
ap.add_argument("n", type=int)
ap.add_argument("--oids", action="store_true", help="write an OID table of n names, not a log")
ap.add_argument("--attributes", type=int, default=20, help="attributes of a job")
ap.add_argument("--values", type=int, default=1, help="values of each string attribute")
ap.add_argument("--documents", type=int, default=0, help="documents of a job, with 6 attributes each")
args = ap.parse_args()
rnd = random.Random(1)


def tag(attr, count, kind):
    return struct.pack("<II137s3xI", count, attr, (OID + str(attr)).encode(), kind)


def block(packed):
    return struct.pack("<I", len(packed)) + packed


def string(text):
    raw = text.encode()
    return block(struct.pack(">I", len(raw)) + raw + bytes(-len(raw) % 4))


def text():
    size, out = rnd.randint(8, 40), rnd.choice(WORDS)
    while len(out) < size:
        out += rnd.choice(" -_.") + rnd.choice(WORDS)
    return out[:size]


def integer(value):
    return block(struct.pack(">i", value))


def time():
    return block(struct.pack(">9i", rnd.randint(1996, 2030), rnd.randint(1, 12), rnd.randint(1, 28),
                             rnd.randint(0, 23), rnd.randint(0, 59), rnd.randint(0, 59),
                             rnd.randint(0, 999), 60 * rnd.randint(-12, 12), rnd.randint(0, 1)))


def columns(layout, first):
    """(tag, values) of each attribute, numbered from first, with VARIANTS prepared values."""
    for attr, kind in enumerate(layout, first):
        if kind == "S":
            yield tag(attr, args.values, STRING), [b"".join(string(text()) for _ in range(args.values))
                                                   for _ in range(VARIANTS)]
        elif kind == "T":
            yield tag(attr, 1, TIME), [time() for _ in range(VARIANTS)]
        elif kind == "I":
            yield tag(attr, 1, INTEGER), [integer(rnd.randint(0, 10 ** rnd.randint(1, 9)))
                                          for _ in range(VARIANTS)]
        else:
            yield tag(attr, 2, INTEGER), [integer(rnd.randint(0, 999)) + integer(rnd.randint(0, 999))
                                          for _ in range(VARIANTS)]


out = sys.stdout.buffer
if args.oids:
    for attr in range(1, args.n + 1):
        out.write(f"{OID}{attr}\t{attr}\t00\tattribute-number-{attr}\n".encode())
    sys.exit()
ANYBODY = struct.pack(">iIiIiiIii", 1, 0, 1, 0, 1, 1, 3055, 0, 2)  # no name, any domain; all users may read
out.write(struct.pack(">III", 3, 1_000_000_000, 1) + tag(100, 1, 7) + block(ANYBODY))
LAYOUT = "SSISSTSSIISSDSSTSSII"  # S string, I int, T time, D int with two values
layout = (LAYOUT * (args.attributes // len(LAYOUT) + 1))[:args.attributes]
cols = [[t + v for v in values] for t, values in columns(layout, 1)]
job = len(cols)
document = [[t + v for v in values] for t, values in columns("SIISST", 501)] if args.documents else []
cols += document * args.documents
head = struct.pack(">III", len(cols), job, len(document))
for start in range(0, args.n, 1000):
    part = []
    for _ in range(min(1000, args.n - start)):
        part.append(head)
        part.extend(map(rnd.choice, cols))
    out.write(b"".join(part))
