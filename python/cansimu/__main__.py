"""python3 -m cansimu convert IN OUT: converts a CAN trace between the
candump log and the other formats python-can reads and writes.
python3 -m cansimu import TRACE... --out DIR: a bench and its scenarios from
recorded diagnostic traffic."""

import argparse
import sys

from .convert import READ_FORMATS, WRITE_FORMATS, ConversionError, convert
from .importer import ImportFailure, import_traces, parse_link


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
    importing = commands.add_parser(
        "import", help="a bench and scenarios from recorded diagnostic traffic",
        description=f"Reads the traces ({', '.join(READ_FORMATS)}), pairs the diagnostic "
                    "requests with their answers per ECU and writes DIR/bench.xml and one "
                    "scenario per ECU that answers as recorded, then prints what was imported.")
    importing.add_argument("traces", metavar="TRACE", nargs="+")
    importing.add_argument("--out", metavar="DIR", required=True,
                           help="the folder to write the bench and scenarios into")
    importing.add_argument("--ecu", metavar="TX/RX=NAME", action="append", default=[],
                           help="an ECU's request and answer identifiers (hex) and its "
                                "name, as 710/77A=gateway; may be repeated")
    importing.add_argument("--dry-run", action="store_true",
                           help="print the report, write nothing")
    importing.add_argument("--force", action="store_true",
                           help="write into DIR even when it holds files")
    arguments = parser.parse_args(argv)
    if arguments.command == "import":
        return _import(arguments)
    try:
        count = convert(arguments.source, arguments.target)
    except ConversionError as error:
        print(f"cansimu convert: {error}", file=sys.stderr)
        return 1
    print(f"{arguments.target}: {count} frames")
    return 0


def _import(arguments):
    try:
        links = [parse_link(text) for text in arguments.ecu]
        report, files = import_traces(arguments.traces, arguments.out, links,
                                      dry_run=arguments.dry_run, force=arguments.force)
    except ImportFailure as error:
        print(f"cansimu import: {error}", file=sys.stderr)
        return 1
    print("\n".join(report))
    verb = "would write" if arguments.dry_run else "wrote"
    print(f"{verb} {', '.join(str(path) for path in files)}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
