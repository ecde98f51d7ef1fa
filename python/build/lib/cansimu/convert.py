"""Trace conversion between every format python-can reads and writes.

The candump log of a bus trace goes in, any python-can 4.1 format comes out
(.asc, .blf, .trc, .csv, .db, .log, .txt for writing), and back. No format
is parsed here: python-can's LogReader reads, its Logger writes, frame by
frame, so a trace is never held whole in memory.
"""

import logging
import os
from pathlib import Path

import can


class ConversionError(Exception):
    """A trace that cannot be read or written."""


# The suffixes python-can 4.1 reads and writes (".gz" on top of either).
READ_FORMATS = (".asc", ".blf", ".csv", ".db", ".log", ".trc")
WRITE_FORMATS = READ_FORMATS + (".txt",)


def _suffix(path):
    suffixes = [s.lower() for s in Path(path).suffixes]
    if suffixes and suffixes[-1] == ".gz":
        return suffixes[-2] if len(suffixes) > 1 else ""
    return suffixes[-1] if suffixes else ""


class _Complaints(logging.Handler):
    """Collects what python-can's readers and writers warn about: a line
    they skip (a truncated TRC) or a frame they cannot write (a remote frame
    in a TRC) would otherwise go missing from the target without a word."""

    def __init__(self):
        super().__init__(logging.WARNING)
        self.messages = []

    def emit(self, record):
        self.messages.append(record.getMessage())


def convert(source, target):
    """Copies every frame of the trace `source` into the trace `target`,
    each in the format its extension names. Returns the number of frames.
    Raises ConversionError for an unknown extension, a missing file, or a
    trace that is truncated or malformed; a target left half written is
    removed."""
    if _suffix(source) not in READ_FORMATS:
        raise ConversionError(f"{source}: python-can reads no '{_suffix(source)}' trace "
                              f"(it reads {', '.join(READ_FORMATS)})")
    if _suffix(target) not in WRITE_FORMATS:
        raise ConversionError(f"{target}: python-can writes no '{_suffix(target)}' trace "
                              f"(it writes {', '.join(WRITE_FORMATS)})")
    if not Path(source).is_file():
        raise ConversionError(f"{source}: no such trace")
    if Path(target).resolve() == Path(source).resolve():
        raise ConversionError(f"{target}: the trace cannot be converted onto itself")
    count = 0
    complaints = _Complaints()
    python_can = logging.getLogger("can")
    python_can.addHandler(complaints)
    try:
        with can.LogReader(str(source)) as reader, can.Logger(str(target)) as writer:
            for message in reader:
                writer.on_message_received(message)
                if complaints.messages:
                    raise ConversionError(complaints.messages[0])
                count += 1
            if complaints.messages:
                raise ConversionError(complaints.messages[0])
    except Exception as error:  # any reader's or writer's failure on a bad file
        try:
            os.remove(target)
        except OSError:
            pass
        where = f"after {count} frames" if count else "at its start"
        reason = str(error) if isinstance(error, ConversionError) else \
            f"{type(error).__name__}: {error}"
        raise ConversionError(f"{source}: conversion stopped {where}: {reason}") from None
    finally:
        python_can.removeHandler(complaints)
    return count
