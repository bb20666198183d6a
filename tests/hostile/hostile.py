#!/usr/bin/env python3
"""hostile.py FXRENDER_FORKED [--pictures N] [--projects N] [--first K] [--keep FOLDER]

Makes damaged and lying files of the seeds in fuzz/seeds and runs fxrender on each, in 1 GiB of address space
(fxrender_forked.cpp).
Whatever the file, the program must not end by a signal, nor take more than 5 seconds of processor time; it
succeeds, with its output and nothing else beside it, or gives one line of text, a documented exit code, and
leaves no file. Before that line may stand the warning that memory will be short. The same number gives the same
file. Exit code 1 when any run was otherwise."""

import argparse
import collections
import concurrent.futures
import os
import pathlib
import random
import subprocess
import sys
import tempfile
import threading
import zlib

SEEDS = pathlib.Path(__file__).resolve().parents[2] / "fuzz" / "seeds"
MOST_SECONDS = 5
DOCUMENTED = {2, 65, 66, 73, 74, 75}
FILTERS = [
    ["Channel separation:Channel=L"],
    ["Blur and enhance:Blur=5,Enhance=true"],
    ["Degauss:Threshold=3"],
    ["Degauss:Threshold=6,Method=FFT"],
    ["Open_Close:Dilate=3"],
    ["Channel separation", "Adaptive threshold:Size=11,Min=0", "Object separator:Det=5"],
]
CLAIMS = [0, 1, 2, 7, 255, 256, 4096, 16383, 16384, 32767, 32768, 32769, 65535, 1 << 20, (1 << 31) - 1, 1 << 31,
          (1 << 32) - 1]


# --- Pictures ---

def put(data, at, size, value, order):
    value &= (1 << 8 * size) - 1
    data[at:at + size] = value.to_bytes(size, order)


def flip(r, data):
    for _ in range(r.choice((1, 1, 2, 8))):
        data[r.randrange(len(data))] ^= 1 << r.randrange(8)


def cut(r, data):
    del data[r.randrange(1, len(data)):]


def overwrite(r, data):
    size = r.choice((1, 2, 4))
    at = r.randrange(max(1, len(data) - size + 1))
    put(data, at, size, r.choice(CLAIMS + [r.getrandbits(32)]), r.choice(("little", "big")))


def move(r, data):
    begin = r.randrange(len(data))
    part = data[begin:begin + r.randrange(1, 64)]
    if r.random() < 0.5:
        del data[begin:begin + len(part)]
    at = r.randrange(len(data) + 1)
    data[at:at] = part * r.choice((1, 1, 50))


def tiff_entries(data):
    """Places of a directory's entries, and their byte order."""
    order = "little" if data[:2] == b"II" else "big"
    number = lambda at, size: int.from_bytes(data[at:at + size], order)
    if number(2, 2) != 42:
        return [], order
    directory = number(4, 4)
    return [directory + 2 + 12 * i for i in range(number(directory, 2)) if directory + 14 + 12 * i <= len(data)], order


def png_chunks(data):
    at = 8
    while at + 12 <= len(data):
        size = int.from_bytes(data[at:at + 4], "big")
        if at + 12 + size > len(data):
            return
        yield at, size
        at += 12 + size


def with_checksums(data):
    for at, size in list(png_chunks(data)):
        put(data, at + 8 + size, 4, zlib.crc32(data[at + 4:at + 8 + size]), "big")


def claim_size(r, data):
    """Sizes, offsets and lengths where the format keeps them."""
    claim = lambda: r.choice(CLAIMS)
    if data[:4] == b"\x89PNG":
        put(data, r.choice((16, 20)), 4, claim(), "big")
        with_checksums(data)
    elif data[:2] in (b"II", b"MM"):
        entries, order = tiff_entries(data)
        lying = {256, 257, 258, 259, 273, 277, 278, 279, 322, 323, 324, 325, 284, 317}
        places = [at for at in entries if int.from_bytes(data[at:at + 2], order) in lying]
        for at in r.sample(places, min(len(places), r.choice((1, 2, 3)))):
            put(data, at + 8, 4, claim(), order)
            if r.random() < 0.3:
                put(data, at + 4, 4, claim(), order)
            if r.random() < 0.2:
                put(data, at + 2, 2, r.choice((1, 3, 4, 5, 16)), order)
    elif data[:2] == b"BM":
        put(data, r.choice((10, 14, 18, 22, 28, 30, 34, 46)), 4, claim(), "little")
    elif data[:1] == b"P" and data[1:2].isdigit():
        words = data.split(maxsplit=3)
        words[r.randrange(len(words))] = str(claim()).encode()
        data[:] = b"\n".join(words)
    elif data[:4] == b"RIFF":
        put(data, r.randrange(4, 40), 4, claim(), "little")
    elif data[:2] == b"\xff\xd8":
        at = data.find(b"\xff\xc0")
        put(data, (at if at > 0 else 2) + r.choice((2, 5, 7)), 2, claim(), "big")
    elif data[:4] == b"\x76\x2f\x31\x01":
        at = data.find(r.choice((b"box2i", b"chlist", b"compression", b"tiledesc"))) + r.randrange(5, 36)
        put(data, min(at, len(data) - 4), 4, claim(), "little")
    else:
        put(data, r.choice((0, 1, 2, 3, 5, 7, 8, 12, 14, 16, 17)), 2, claim(), "little")


def hostile_picture(number):
    r = random.Random(number)
    seed = r.choice(PICTURES)
    data = bytearray(seed.read_bytes())
    for _ in range(r.choice((1, 1, 2, 4))):
        r.choice((flip, cut, overwrite, move, claim_size, claim_size))(r, data)
        if len(data) < 2:
            break
    if data[:4] == b"\x89PNG" and r.random() < 0.6:
        with_checksums(data)
    if r.random() < 0.02:
        data += bytes(r.randrange(1, 1 << 20))
    return seed.suffix, bytes(data)


# --- Projects ---

VALUES = ["", "-1", "0", "2147483647", "-2147483648", "99999999999999999999", "nan", "inf", "1e308", "1e-400", "0x10",
          "true", "\u202e", "&#10;", "&amp;lt;", "&#0;", "%s%n", "../" * 2000, "x" * 70000, "2005", "2011", "9" * 5000]


def attribute(r, text):
    at = [i for i, c in enumerate(text) if c == "="]
    if not at:
        return text
    begin = text.find('"', r.choice(at)) + 1
    end = text.find('"', begin)
    return text[:begin] + r.choice(VALUES) + text[end:] if 0 < begin <= end else text


def repeat(r, text):
    lines = text.split("\n")
    begin = r.randrange(len(lines))
    end = min(len(lines), begin + r.randrange(1, 8))
    return "\n".join(lines[:end] + lines[begin:end] * r.choice((1, 3, 100, 3000)) + lines[end:])


def drop(r, text):
    lines = text.split("\n")
    del lines[r.randrange(len(lines))]
    return "\n".join(lines)


def nest(r, text):
    depth = r.choice((10, 70, 5000))
    at = text.find("<", r.randrange(len(text) + 1))
    return text[:at] + "<a>" * depth + "</a>" * r.choice((depth, depth, 0)) + text[at:]


def many_keys(r, text):
    count = r.choice((100, 30000, 600000))
    keys = "".join(f'<key frame="{r.choice((i, -i, i * 10**15))}" value="{i % 9}"/>' for i in range(count))
    at = text.find("</parameter>")
    return text[:at] + keys + text[at:] if at >= 0 else text


def entities(r, text):
    bomb = "<!DOCTYPE a [<!ENTITY a 'aaaaaaaaaa'>" + "".join(
        f"<!ENTITY {chr(98 + i)} '{('&' + chr(97 + i) + ';') * 10}'>" for i in range(8)) + "]>"
    at = text.find("<fxproject")
    return text[:at] + bomb + text[at:].replace('"1"', '"&i;"', 1)


def hostile_project(number):
    r = random.Random(number)
    text = r.choice(PROJECTS).read_text(encoding="utf-8", errors="surrogateescape")
    for _ in range(r.choice((0, 1, 2, 3))):
        text = r.choice((attribute, attribute, attribute, repeat, drop, nest, many_keys, entities))(r, text)
    data = bytearray(text.encode("utf-8", errors="surrogateescape"))
    for _ in range(r.choice((0, 0, 1, 2))):
        if len(data) > 1:
            r.choice((flip, cut, overwrite, move))(r, data)
    return ".fxp", bytes(data)


# --- Runs ---

PROGRAM = threading.local()  # one for each worker


def run(folder, errors, arguments):
    """Exit code, or minus the signal, and seconds of processor time."""
    if not hasattr(PROGRAM, "process"):
        PROGRAM.process = subprocess.Popen([options.program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    PROGRAM.process.stdin.write("\t".join([folder, errors] + arguments) + "\n")
    PROGRAM.process.stdin.flush()
    code, seconds = PROGRAM.process.stdout.readline().split()
    return int(code), float(seconds)


def trial(kind, number):
    """What became of one file, and what was wrong with that, or None."""
    suffix, data = (hostile_picture if kind == "picture" else hostile_project)(number)
    with tempfile.TemporaryDirectory(prefix="hostile") as folder:
        name = "in" + suffix
        pathlib.Path(folder, name).write_bytes(data)
        if kind == "picture":
            filters = FILTERS[number % len(FILTERS)]
            command = ["apply", name, "-o", "out.png"] + [word for text in filters for word in ("-f", text)]
        else:
            pathlib.Path(folder, "c.ppm").write_bytes((SEEDS / "picture" / "ppm_raw.ppm").read_bytes())
            command = ["render", name, "-o", "out.png"]
        before = set(os.listdir(folder))
        errors = folder + ".txt"
        code, seconds = run(folder, errors, command + ["--progress", "none", "--jobs", "1"])
        text = pathlib.Path(errors).read_bytes()
        os.unlink(errors)
        new = set(os.listdir(folder)) - before
        lines = [line for line in text.split(b"\n") if line and b" of memory are needed, and " not in line]
        refused = [line for line in lines if b": warning: " not in line and b": note: " not in line]
        fault = None
        if code < 0:
            fault = f"signal {-code}"
        elif seconds > MOST_SECONDS:
            fault = f"{seconds:.1f} s of processor time"
        elif any(byte < 32 and byte != 10 or byte == 127 for byte in text):
            fault = "control characters in the message"
        elif code == 0 and (refused or "out.png" not in new or new - {"out.png", ".fxrender"}):
            fault = f"success, but {refused} and {sorted(new)}"
        elif code != 0 and code not in DOCUMENTED:
            fault = f"exit code {code}"
        elif code != 0 and new - {".fxrender"}:
            fault = f"left {sorted(new)}"
        elif code != 0 and (len(refused) != 1 or not text.endswith(b"\n") or (kind == "picture" and len(lines) != 1)):
            fault = f"{len(lines)} lines"
        if fault and options.keep:
            pathlib.Path(options.keep, f"{kind}-{number}{suffix}").write_bytes(data)
        return kind, number, code, seconds, fault, text[:300]


parser = argparse.ArgumentParser()
parser.add_argument("program", type=os.path.abspath)
parser.add_argument("--pictures", type=int, default=10000)
parser.add_argument("--projects", type=int, default=1000)
parser.add_argument("--first", type=int, default=0)
parser.add_argument("--keep")
options = parser.parse_args()
PICTURES = sorted((SEEDS / "picture").iterdir())
PROJECTS = sorted((SEEDS / "project").iterdir())
jobs = [("picture", options.first + i) for i in range(options.pictures)]
jobs += [("project", options.first + i) for i in range(options.projects)]
codes = collections.Counter()
faults, slowest = 0, 0
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    for kind, number, code, seconds, fault, text in pool.map(lambda job: trial(*job), jobs):
        codes[kind, code] += 1
        slowest = max(slowest, seconds)
        if sum(codes.values()) % 1000 == 0:
            print(f"{sum(codes.values())} of {len(jobs)}", file=sys.stderr, flush=True)
        if fault:
            faults += 1
            print(f"{kind} {number}: {fault}: {text!r}", flush=True)
for (kind, code), count in sorted(codes.items()):
    print(f"{kind:8} exit code {code:4} {count:6}")
print(f"{len(jobs)} files, {faults} findings, slowest {slowest:.1f} s of processor time")
sys.exit(faults > 0)
