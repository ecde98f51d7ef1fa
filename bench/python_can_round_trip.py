"""The reference for the library's round trips: python-can's virtual bus,
one frame sent on one bus object and received on another, `count` times per
repetition. Prints the median seconds per round trip over the repetitions.

Usage: python_can_round_trip.py COUNT REPETITIONS
"""
import statistics
import sys
import time

import can


def main() -> int:
    count, repetitions = int(sys.argv[1]), int(sys.argv[2])
    sender = can.Bus(interface="virtual", channel="cansimu-bench")
    receiver = can.Bus(interface="virtual", channel="cansimu-bench")
    frame = can.Message(arbitration_id=0x7E0, data=[0x22, 0xF1, 0x90], is_extended_id=False)
    try:
        for _ in range(min(count, 1000)):
            sender.send(frame)
            receiver.recv(timeout=1.0)
        per_round_trip = []
        for _ in range(repetitions):
            start = time.process_time()
            for _ in range(count):
                sender.send(frame)
                if receiver.recv(timeout=1.0) is None:
                    print("a frame was lost", file=sys.stderr)
                    return 1
            per_round_trip.append((time.process_time() - start) / count)
    finally:
        sender.shutdown()
        receiver.shutdown()
    print(statistics.median(per_round_trip))
    return 0


if __name__ == "__main__":
    sys.exit(main())
