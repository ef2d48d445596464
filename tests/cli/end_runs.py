"""end_runs.py TOOL [RUNS] [SEED]: ends runs of the tool by signals at random moments, and looks at what is left.

Each run reads baskets (from a file, a pipe or a FIFO), spills, writes two documents and prints rules (into a file or a
pipe that is read slowly). It is ended by SIGTERM, SIGINT, SIGHUP or SIGKILL. Then:

- a document is what it was before, or the whole new one;
- after anything but SIGKILL no other file is there, and the run has ended by that signal;
- after SIGKILL there may be files with the names of temporary ones; a last run removes those after a day.

Prints a line for each signal and each stage: how many runs were ended there, the longest time from the signal to the
end of the process, and how many left a file. Exit code 1 when one of the above does not hold.
The stage is told by what the run had said on standard error.
"""

import os
import random
import re
import signal
import subprocess
import sys
import tempfile
import threading
import time

SIGNALS = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL]
TEMPORARY = re.compile(r"\.korassoc-[0-9a-f]{32}\.tmp|korassoc-[0-9a-f]{16}\.spill")
STAGES = [  # and the line that tells its end
    ("reading", r"^items "),
    ("mining", r"^itemsets "),
    ("writing PMML", r"^document .* the rules as PMML"),
    ("writing the lattice", r"^document .* the lattice"),
    ("making rules", r"^rules "),
    ("writing rules", r"^seconds "),
]


def baskets():
    """All subsets of one basket of 9 items are stored for good; items that come alone find no room."""
    lines = [" ".join(str(item) for item in range(1, 10))] * 11
    lines += [str(100 + item) for item in range(10000)] * 2
    return "\n".join(lines) + "\n"


def stage_of(said):
    for stage, end in STAGES:
        if not re.search(end, said, re.MULTILINE):
            return stage
    return "at its end"


class Folder:
    def __init__(self, path):
        self.path = path
        os.mkdir(self("spill"))
        with open(self("baskets"), "w") as file:
            file.write(baskets())
        os.mkfifo(self("fifo"))

    def __call__(self, name):
        return os.path.join(self.path, name)

    def read(self, name):
        with open(self(name)) as file:
            return file.read()

    def write(self, name, text):
        with open(self(name), "w") as file:
            file.write(text)

    def left(self):
        """What is there beside the documents and what the script has put there."""
        names = set(os.listdir(self.path)) - {"spill", "baskets", "fifo", "rules.xml", "lattice.xml", "out", "err"}
        return names | {"spill/" + name for name in os.listdir(self("spill"))}


def arguments(tool, folder, source):
    return [tool, "mine", source, "-s", "2n", "-c", "10%", "--approximate", "--max-sets", "2000",
            "--spill", folder("spill"), "--pmml", folder("rules.xml"), "--lattice", folder("lattice.xml")]


def feed(write_to, text):
    """Hands the baskets over in pieces; the tool may end at any time."""
    try:
        with write_to() as pipe:
            for at in range(0, len(text), 20000):
                pipe.write(text[at : at + 20000])
                time.sleep(0.002)
    except OSError:
        pass


def drain(pipe):
    while pipe.read(20000):
        time.sleep(0.005)


class Run:
    def __init__(self, tool, folder, dice, text):
        kind = dice.choice(["file", "pipe", "fifo"])
        source = {"file": folder("baskets"), "pipe": "-", "fifo": folder("fifo")}[kind]
        slow = dice.random() < 0.3
        with open(folder("out"), "w") as out, open(folder("err"), "w") as err:
            self.process = subprocess.Popen(
                arguments(tool, folder, source), stdin=subprocess.PIPE if kind == "pipe" else subprocess.DEVNULL,
                stdout=subprocess.PIPE if slow else out, stderr=err, text=True)
        self.threads = []
        if kind == "pipe":
            self.start(feed, lambda: self.process.stdin, text)
        elif kind == "fifo":
            self.start(feed, lambda: open(folder("fifo"), "w"), text)
        if slow:
            self.start(drain, self.process.stdout)
        self.fifo = folder("fifo") if kind == "fifo" else None

    def start(self, what, *with_these):
        thread = threading.Thread(target=what, args=with_these)
        thread.start()
        self.threads.append(thread)

    def wait(self):
        code = self.process.wait()
        ended = time.monotonic()
        if self.fifo:  # whoever feeds it may still wait for the tool to open it, or to read on
            reader = os.open(self.fifo, os.O_RDONLY | os.O_NONBLOCK)
            while any(thread.is_alive() for thread in self.threads):
                try:
                    os.read(reader, 1 << 16)
                except BlockingIOError:
                    pass
                time.sleep(0.001)
            os.close(reader)
        for thread in self.threads:
            thread.join()
        return code, ended


def main():
    tool, runs, seed = sys.argv[1], int((sys.argv[2:] or [150])[0]), int((sys.argv[3:] or [1])[0])
    dice = random.Random(seed)
    text = baskets()
    breaches, table = [], {}
    with tempfile.TemporaryDirectory() as path:
        folder = Folder(path)
        begin = time.monotonic()
        subprocess.run(arguments(tool, folder, folder("baskets")), check=True, capture_output=True)
        whole = time.monotonic() - begin
        after = {name: folder.read(name) for name in ("rules.xml", "lattice.xml")}
        for number in range(runs):
            for name in after:
                folder.write(name, "before")
            before = folder.left()
            run = Run(tool, folder, dice, text)
            by = dice.choice(SIGNALS)
            time.sleep(dice.uniform(0, whole))
            sent = time.monotonic()
            run.process.send_signal(by)
            code, ended = run.wait()
            left = folder.left() - before
            if code == 0:
                row = table.setdefault(("none", "before the signal"), [0, 0.0, 0])
            else:
                row = table.setdefault((by.name, stage_of(folder.read("err"))), [0, 0.0, 0])
                row[1] = max(row[1], ended - sent)
                if code != -by:
                    breaches.append(f"run {number}: {by.name}: exit code {code}")
            row[0] += 1
            row[2] += 1 if left else 0
            if left and (by != signal.SIGKILL or not all(TEMPORARY.fullmatch(os.path.basename(n)) for n in left)):
                breaches.append(f"run {number}: {by.name} left {sorted(left)}")
            for name, complete in after.items():
                if folder.read(name) not in ("before", complete):
                    breaches.append(f"run {number}: {by.name}: {name} is neither the old nor the new document")
        for name in folder.left():
            os.utime(folder(name), (time.time() - 25 * 3600,) * 2)
        subprocess.run(arguments(tool, folder, folder("baskets")), check=True, capture_output=True)
        if folder.left():
            breaches.append(f"left after a day: {sorted(folder.left())}")
    print(f"{runs} runs of {whole:.2f} seconds, seed {seed}")
    print(f"{'signal':<8} {'stage':<20} {'runs':>5} {'slowest end':>12} {'left a file':>12}")
    for (by, stage), (count, slowest, left) in sorted(table.items()):
        print(f"{by:<8} {stage:<20} {count:>5} {slowest * 1000:>9.1f} ms {left:>12}")
    for breach in breaches:
        print(breach)
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
