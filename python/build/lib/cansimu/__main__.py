"""python3 -m cansimu convert IN OUT: converts a CAN trace between the
candump log and the other formats python-can reads and writes."""

import argparse
import sys

from .convert import READ_FORMATS, WRITE_FORMATS, ConversionError, convert


def main(argv=None):
    parser = argparse.ArgumentParser(prog="python3 -m cansimu",
                                     description="cansimu's tools for Python")
    commands = parser.add_subparsers(dest="command", required=True)
    converting = commands.add_parser(
        "convert", help="convert a CAN trace from one format to another",
        description=f"Reads the trace IN ({', '.join(READ_FORMATS)}) and writes its frames "
                    f"to OUT ({', '.join(WRITE_FORMATS)}); the extensions give the formats.")
    converting.add_argument("source", metavar="IN")
    converting.add_argument("target", metavar="OUT")
    arguments = parser.parse_args(argv)
    try:
        count = convert(arguments.source, arguments.target)
    except ConversionError as error:
        print(f"cansimu convert: {error}", file=sys.stderr)
        return 1
    print(f"{arguments.target}: {count} frames")
    return 0


if __name__ == "__main__":
    sys.exit(main())
