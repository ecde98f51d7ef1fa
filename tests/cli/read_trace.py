"""Reads a cansimu bus trace with python-can's candump log reader, frame for
frame, and prints each frame as ID#DATA (the identifier in hex, upper case);
exits 1 when a frame is not a classic CAN frame or the times go back."""
import sys

import can


def main(path):
    last = 0.0
    with can.CanutilsLogReader(path) as reader:
        for message in reader:
            if message.is_extended_id or message.is_fd or message.dlc > 8:
                print("not a classic frame:", message)
                return 1
            if message.timestamp < last:
                print("time goes back at", message)
                return 1
            last = message.timestamp
            print("%03X#%s" % (message.arbitration_id, message.data.hex().upper()))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
