"""Times `python3 -m cansimu import` on generated candump logs and measures
its peak memory, to show that a long recording costs time, not memory.

Each log mixes what a diagnostic session puts on a bus: an engine ECU read
over single and multi-frame messages with a rotating engine speed, a
functional tester present answered by two ECUs, a gateway on identifiers of
no convention, a 29-bit ECU with a long answer, and periodic frames of other
ECUs (about a third of the traffic). The import runs in a child process;
its wall time and peak resident set size are printed per log size.

Usage: python3 bench/import_bench.py [FRAMES...]   (default: 100000 1000000)
Run it with a Python that imports cansimu (the package's venv, or
PYTHONPATH=python).
"""

import itertools
import resource
import subprocess
import sys
import tempfile
import time
from pathlib import Path


def _segment(payload):
    if len(payload) <= 7:
        return [bytes([len(payload)]) + payload + b"\xAA" * (7 - len(payload))]
    frames = [bytes([0x10 | len(payload) >> 8, len(payload) & 0xFF]) + payload[:6]]
    rest, sequence = payload[6:], 1
    while rest:
        chunk, rest = rest[:7], rest[7:]
        frames.append(bytes([0x20 | sequence]) + chunk + b"\xAA" * (7 - len(chunk)))
        sequence = (sequence + 1) & 0x0F
    return frames


def _exchange(tx, rx, request, answer):
    lines = [(tx, frame) for frame in _segment(request)]
    answered = _segment(answer)
    lines.append((rx, answered[0]))
    if len(answered) > 1:
        lines.append((tx, b"\x30\x00\x00\xAA\xAA\xAA\xAA\xAA"))
    lines += [(rx, frame) for frame in answered[1:]]
    return lines


def _cycle(speed):
    frames = []
    frames += _exchange("7E0", "7E8", b"\x22\xF1\x90", b"\x62\xF1\x90" + b"VF1SIMU0000000042")
    frames += _exchange("7E0", "7E8", b"\x22\xDD\x01", b"\x62\xDD\x01" + speed.to_bytes(2, "big"))
    frames += _exchange("7DF", "7E8", b"\x3E\x00", b"\x7E\x00")
    frames.append(("7E9", b"\x02\x7E\x00\xAA\xAA\xAA\xAA\xAA"))
    frames += _exchange("710", "77A", b"\x22\xF1\x8C", b"\x62\xF1\x8C" + b"GW-0001")
    frames += _exchange("18DA10F1", "18DAF110", b"\x19\x02\xFF", b"\x59\x02\xFF" + bytes(40))
    return frames


def generate(path, count):
    """A candump log of `count` frames, 1 ms apart."""
    speeds = itertools.cycle(range(800, 6400, 700))  # 8 values: a rotation of 8 answers
    periodic = itertools.cycle(f"{0x100 + n:03X}" for n in range(16))
    written, stamp = 0, 1700000000.0
    with open(path, "w") as log:
        while written < count:
            for can_id, data in _cycle(next(speeds)):
                for other in ([] if written % 3 else [next(periodic)]):
                    if written < count:
                        log.write(f"({stamp:.6f}) can0 {other}#0011223344556677\n")
                        written, stamp = written + 1, stamp + 0.001
                if written < count:
                    log.write(f"({stamp:.6f}) can0 {can_id}#{data.hex().upper()}\n")
                    written, stamp = written + 1, stamp + 0.001


def measure(count, folder):
    log = Path(folder) / f"bus-{count}.log"
    generate(log, count)
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    start = time.perf_counter()
    done = subprocess.run([sys.executable, "-m", "cansimu", "import", str(log),
                           "--out", str(Path(folder) / f"out-{count}")],
                          capture_output=True, text=True)
    seconds = time.perf_counter() - start
    peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss
    if done.returncode:
        print(done.stderr, file=sys.stderr)
        return False
    # ru_maxrss of the children is the largest of any child so far: the
    # sizes run in increasing order, so a flat figure means flat memory.
    print(f"{count} frames ({log.stat().st_size / 1e6:.0f} MB): {seconds:.1f} s, "
          f"{count / seconds:,.0f} frames/s, peak RSS {max(peak, before) / 1024:.0f} MiB")
    for line in done.stdout.splitlines()[:6]:
        print(f"  {line}")
    return True


def main():
    sizes = [int(size) for size in sys.argv[1:]] or [100000, 1000000]
    with tempfile.TemporaryDirectory() as folder:
        for count in sorted(sizes):
            if not measure(count, folder):
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
