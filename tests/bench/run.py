#!/usr/bin/env python3
"""run.py BUILD [--records N] [--pairs N] [--growth]: compares the tool of a release build with other programs.

Times are CPU time, user and system, of whole processes; the report goes to /dev/null.  Two commands run in turn; the
ratio is the median of the pairs' ratios, because the machine's speed varies.  --growth also measures how the cost
grows.  The output is for docs/performance.md.
"""
import argparse
import os
import random
import shutil
import statistics
import struct
import subprocess
import sys

ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
ap.add_argument("build")
ap.add_argument("--records", type=int, default=500_000, help="of the log for the main figures")
ap.add_argument("--pairs", type=int, default=7)
ap.add_argument("--growth", action="store_true")
args = ap.parse_args()

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.path.abspath(args.build)
DATA = os.path.join(BUILD, "bench-data")
TOOL = os.path.join(BUILD, "bin", "qvledger")
FLOOR = os.path.join(BUILD, "bin", "floor")
OIDS = os.path.join(DATA, "oids")
ENVIRONMENT = {"PATH": os.environ["PATH"], "TZ": "UTC", "LC_ALL": "C.UTF-8",
               "QV_REGISTRY": os.path.join(DATA, "registry.reg")}
ATTRIBUTES = 20


# ---- Data ----

def generate(name, *arguments):
    """The folder of a log made by genlog.py."""
    folder = os.path.join(DATA, name)
    log = os.path.join(folder, "alpha.20260101")
    if not os.path.exists(log):
        os.makedirs(folder, exist_ok=True)
        with open(log + ".new", "wb") as out:
            subprocess.run([sys.executable, os.path.join(HERE, "genlog.py"), *map(str, arguments)], stdout=out, check=True)
        os.rename(log + ".new", log)
    return folder


def process_accounts(count):
    """A file of process accounting records, version 3."""
    path = os.path.join(DATA, f"pacct-{count}")
    if not os.path.exists(path):
        rnd = random.Random(1)
        with open(path, "wb") as out:
            for _ in range(count):
                out.write(struct.pack("<BBHIIIIIIf8H16s", 0, 3, rnd.randint(0, 99), 0, rnd.randint(0, 9999), 100,
                                      rnd.randint(1, 99999), 1, 1_600_000_000 + rnd.randint(0, 10**8),
                                      rnd.random() * 1000, *[rnd.randint(0, 999) for _ in range(8)],
                                      rnd.choice([b"bash", b"make", b"gcc", b"lpd"])))
    return path


def many_logs(name, count, records):
    """Folders with the same records in count logs, and in one log."""
    source = open(os.path.join(generate(f"log-{records}", records), "alpha.20260101"), "rb").read()
    head = len(open(os.path.join(generate("log-0", 0), "alpha.20260101"), "rb").read())
    apart, together = os.path.join(DATA, name), os.path.join(DATA, name + "-in-one")
    if not os.path.exists(together):
        os.makedirs(apart)
        for day in range(count):
            date = 20200000 + day // 336 * 10000 + day % 336 // 28 * 100 + 101 + day % 28
            open(os.path.join(apart, f"alpha.{date}"), "wb").write(source)
        os.makedirs(together)
        with open(os.path.join(together, "alpha.20200101"), "wb") as out:
            out.write(source[:head])
            for _ in range(count):
                out.write(source[head:])
    return apart, together


def crowded_folder():
    folder = os.path.join(DATA, "crowded")
    if not os.path.exists(folder):
        os.makedirs(folder)
        for number in range(100_000):
            open(os.path.join(folder, f"foreign-file-{number}"), "w").close()
        for number in range(3650):
            open(os.path.join(folder, f"alpha.{20000101 + number}"), "w").close()
    return folder


def sample_log():
    """The root of a sample system, whose logs have every value type."""
    root = os.path.join(DATA, "sample")
    if not os.path.exists(root):
        subprocess.run([os.path.join(BUILD, "bin", "mksample"), root, "--jobs", "100000", "--days", "3"], check=True,
                       stdout=subprocess.DEVNULL)
    return root


# ---- Measuring ----

def peak_of(command):
    """Peak KiB of a run, measured by time(1): a direct child would start with the memory of this process."""
    output = subprocess.run(["/usr/bin/time", "-q", "-f", "%M", *command], env=ENVIRONMENT, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True).stderr
    return int(output.split()[-1])


def cost(command):
    """CPU seconds of a run."""
    pid = os.fork()
    if pid == 0:
        null = os.open("/dev/null", os.O_RDWR)
        for fd in 0, 1, 2:
            os.dup2(null, fd)
        os.execvpe(command[0], command, ENVIRONMENT)
    _, _, usage = os.wait4(pid, 0)
    return usage.ru_utime + usage.ru_stime


def instructions_of(command):
    """Instructions that valgrind counts; the same on every machine with the same libraries."""
    output = subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", *command],
                          env=ENVIRONMENT | {"QV_LOG": "none"}, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                          text=True).stderr
    return next(int(line.split()[-1]) for line in output.splitlines() if "Collected" in line)


def pairs(first, second):
    """Medians of both costs and of their ratio."""
    cost(first), cost(second)
    costs = [(cost(first), cost(second)) for _ in range(args.pairs)]
    medians = [statistics.median(column) for column in zip(*costs)]
    return medians[0], medians[1], statistics.median(a / b for a, b in costs if b > 0)


def report(folder, *options):
    return [TOOL, "-p", folder, "-O", OIDS, *options, "alpha"]


def fields_of(command):
    """Fields that the command writes."""
    out = subprocess.run(command, env=ENVIRONMENT, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return out.count(b"\t") + out.count(b"\n")


def row(what, target, value, note):
    print(f"| {what} | {target} | {value} | {note} |", flush=True)


def main_table():
    log = generate(f"log-{args.records}", args.records)
    floor = [FLOOR, os.path.join(log, "alpha.20260101")]
    print("| What | Target | Measured | Details |\n|---|---|---|---|")
    tool, bare, ratio = pairs(report(log), floor)
    attributes = args.records * ATTRIBUTES
    each = tool / attributes
    row("CPU, tool / floor", "at most 4", f"{ratio:.2f}",
        f"{each * 1e9:.0f} ns per attribute, `floor` {bare / attributes * 1e9:.0f} ns")

    few, many = (instructions_of(report(generate(f"log-{count}", count))) for count in (2_000, 12_000))
    row("instructions per record of 20 attributes", "at most 15,000", f"{(many - few) / 10_000:,.0f}",
        "12,000 records against 2,000; independent of the load")

    accounts = process_accounts(2_000_000)
    _, dumped, ratio = pairs(report(log), ["dump-acct", accounts])
    row("attributes per CPU second / fields of `dump-acct`", "at least 1.0",
        f"{attributes / (2_000_000 * 15) / ratio:.2f}", f"`dump-acct` {dumped / 30_000_000 * 1e9:.0f} ns per field")

    quarter = args.records // 4
    plain, documents = generate(f"log-{quarter}", quarter), generate(f"documents-{quarter}", quarter, "--documents", 3)
    _, _, ratio = pairs(report(documents, "-a"), report(plain))
    row("an attribute under `-a` with 3 documents / without", "at most 1.3", f"{ratio * 20 / 38:.2f}",
        "38 attributes per job against 20")

    root = sample_log()
    sample = [TOOL, "-p", os.path.join(root, "var/acct"), "-O", os.path.join(root, "share/oid"), "alpha"]
    fields = fields_of(sample)
    of_sample, _, ratio = pairs(sample, report(plain))
    row("an attribute of every value type / of that log", "at most 2",
        f"{ratio * quarter * ATTRIBUTES / fields:.2f}", f"{of_sample / fields * 1e9:.0f} ns per attribute")

    peak, little = peak_of(report(log)), peak_of(report(generate("log-1000", 1000)))
    row("peak memory", "at most 8 MiB, 256 KiB of growth", f"{peak / 1024:.1f} MiB, {peak - little:+d} KiB",
        f"{args.records:,} records against 1,000")

    short, short_accounts = report(generate("log-10", 10)), ["dump-acct", process_accounts(10)]
    # One run is too short to be timed, so a shell runs each program fifty times.
    repeat = ["sh", "-c", 'for i in 1 2 3 4 5 6 7 8 9 10; do for j in 1 2 3 4 5; do "$@"; done; done', "sh"]
    tool, other, ratio = pairs(repeat + short, repeat + short_accounts)
    row("10 records, whole run / `dump-acct`", "at most 2", f"{ratio:.2f}",
        f"{tool / 50 * 1e3:.1f} ms against {other / 50 * 1e3:.1f} ms")

    apart, together = many_logs("year", 365, 1000)
    _, _, ratio = pairs(report(apart), report(together))
    row("365 logs / one log of the same records", "within 10 %", f"{ratio:.2f}", "365,000 records")

    folder = crowded_folder()
    listing, plain_listing, _ = pairs(report(folder, "-s", "99990101"), ["ls", "-f", folder])
    row("listing 3,650 logs among 100,000 files", "below 2 x `ls -f` + 10 ms",
        f"{listing * 1e3:.0f} ms", f"`ls -f` {plain_listing * 1e3:.0f} ms")
    return each


def growth():
    def series(name, sizes, command_of, units_of, unit="attribute"):
        costs = [(size, statistics.median(cost(command_of(size)) for _ in range(5))) for size in sizes]
        print(f"\n    {name + '    ':<36}ns per {unit}")
        for size, seconds in costs:
            bar = "#" * max(1, round(40 * seconds / costs[-1][1]))
            print(f"{size:>14,} {seconds:10.3f} s {seconds / units_of(size) * 1e9:7.0f} ns  {bar}")

    def log(name, *arguments):
        return report(generate(name, *arguments))

    series("records of 20 attributes", (50_000, 100_000, 200_000),
           lambda n: log(f"log-{n}", n), lambda n: n * 20)
    series("attributes of 50,000 records", (10, 20, 40),
           lambda n: log(f"attributes-{n}", 50_000, "--attributes", n), lambda n: n * 50_000)
    series("values of each of 12 strings of 20,000 records", (1, 4, 16),
           lambda n: log(f"values-{n}", 20_000, "--values", n), lambda n: (12 * n + 9) * 20_000, "value")
    series("logs of 200 records", (10, 100, 1000),
           lambda n: report(many_logs(f"logs-{n}", n, 200)[0]), lambda n: n * 200 * 20)
    series("documents of each of 20,000 jobs under -a", (1, 3, 9),
           lambda n: report(generate(f"docs-{n}", 20_000, "--documents", n), "-a"), lambda n: (20 + 6 * n) * 20_000)


shutil.rmtree(os.path.join(DATA, "sample"), ignore_errors=True)
os.makedirs(OIDS, exist_ok=True)
with open(os.path.join(OIDS, "oids"), "wb") as table:
    subprocess.run([sys.executable, os.path.join(HERE, "genlog.py"), "2000", "--oids"], stdout=table, check=True)
with open(ENVIRONMENT["QV_REGISTRY"], "w") as registry:
    registry.write("REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kelmo\\Quorvane\\CurrentVersion\\Environment]\n"
                   f'"QV_ROOT"="{DATA}"\n')
each = main_table()
print(f"\nA day of 10,000,000 jobs of 20 attributes: {each * 200_000_000:.0f} s of CPU.")
if args.growth:
    growth()
