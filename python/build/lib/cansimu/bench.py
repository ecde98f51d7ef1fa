"""A bench's files as cansimu reads them: the ECUs of its UCE elements (for
the host's association table), INJECT elements added the way a tester's
editor saves them, and saves that move a file's modification time on."""

import os
import re
import time
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass
from pathlib import Path

from .binding import CansimuError


class BenchError(CansimuError):
    """A bench or scenario file that cannot be read, parsed or edited."""


_HEX_NUMBER = re.compile(r"(?:0[xX])?([0-9a-fA-F]{1,8})")
_STRTOL_HEX = re.compile(r"\s*([+-]?)(?:0[xX](?=[0-9a-fA-F]))?([0-9a-fA-F]*)")


def parse_hex_number(text):
    """A one-byte address or an identifier as a tester types it ("10",
    "0x10", "7e0"); None for any other text."""
    match = _HEX_NUMBER.fullmatch(text)
    return int(match.group(1), 16) if match else None


def library_hex(text):
    """An identifier as the library reads it: strtol with base 16 into a
    32-bit long (leading blanks, a sign, 0x, digits up to the first other
    character; none give 0; clamped to the signed 32-bit range), as
    unsigned 32 bits."""
    match = _STRTOL_HEX.match(text)
    value = int(match.group(2), 16) if match.group(2) else 0
    value = -value if match.group(1) == "-" else value
    value = max(-(1 << 31), min((1 << 31) - 1, value))
    return value & 0xFFFFFFFF


@dataclass(frozen=True)
class Ecu:
    """One UCE element of a bench."""

    target_address: str
    id_tx: int
    id_rx: int
    scenario: str
    address: "int | None"  # the one-byte diagnostic address, None when it is no such number
    usable: bool  # the library creates an ECU for it (targetAddress, idRx, idTx given)

    @property
    def name(self):
        """The scenario's file name without folder and extension ("engine")."""
        file = re.split(r"[/\\]", self.scenario)[-1]
        stem, dot, _ = file.rpartition(".")
        return stem if dot and stem else file

    @property
    def addressed(self):
        """In the host's association table: usable, with a one-byte address."""
        return self.usable and self.address is not None

    def __str__(self):
        shown = f"0x{self.address:02X}" if self.address is not None else repr(self.target_address)
        return f"{shown} {self.name}".strip()


def parse_bench(path):
    """The parsed bench; BenchError for a file that is unreadable or no XML."""
    try:
        return ElementTree.parse(path)
    except OSError as error:
        raise BenchError(f"cannot read the bench {path}: {error.strerror}") from None
    except ElementTree.ParseError as error:
        raise BenchError(f"{path} is not an XML bench: {error}") from None


def read_ecus(path):
    """Every UCE element of the bench, anywhere in it, in document order."""
    ecus = []
    for element in parse_bench(path).getroot().iter("UCE"):
        attribute = element.attrib.get
        target, id_rx, id_tx = attribute("targetAddress", ""), attribute("idRx", ""), \
            attribute("idTx", "")
        address = parse_hex_number(target)
        ecus.append(Ecu(target, library_hex(id_tx), library_hex(id_rx),
                        attribute("scenario", ""),
                        address if address is not None and address <= 0xFF else None,
                        bool(target and id_rx and id_tx)))
    return ecus


def find_ecu(ecus, name):
    """The ECU `name` designates, as cansimu reads it: its targetAddress, its
    idTx (both as hex numbers, or ints), or its scenario's name, tried in that
    order; only usable ECUs count. None when nothing matches."""
    number = name if isinstance(name, int) else parse_hex_number(str(name))
    usable = [ecu for ecu in ecus if ecu.usable]
    for matches in (lambda ecu: number is not None and ecu.address == number,
                    lambda ecu: number is not None and ecu.id_tx == number,
                    lambda ecu: isinstance(name, str) and ecu.name.lower() == name.lower()):
        for ecu in usable:
            if matches(ecu):
                return ecu
    return None


def save(path, text):
    """Writes `text` to `path` (bytes or str, UTF-8) and makes sure its
    modification time moves on by a whole second at least: the library
    compares whole seconds, so a save within the second of the last one
    would go unseen. Written beside the file and renamed over it, so a
    reader sees the old text or the new one."""
    path = Path(path)
    before = path.stat().st_mtime if path.exists() else None
    data = text.encode("utf-8") if isinstance(text, str) else text
    temporary = path.with_name(path.name + ".cansimu-new")
    temporary.write_bytes(data)
    os.replace(temporary, path)
    touch(path, before)


def touch(path, before=None):
    """Moves the modification time of `path` on past `before` (its current
    time when None) by at least a second."""
    path = Path(path)
    before = path.stat().st_mtime if before is None else before
    stamp = max(time.time(), int(before) + 1)
    os.utime(path, (stamp, stamp))


def append_element(path, element):
    """Inserts `element` (one line of XML) as the last child of the root of
    the XML file at `path`, indented like the root's closing tag plus two,
    the rest of the text untouched, and saves it. Returns its line number."""
    path = Path(path)
    try:
        text = path.read_text(encoding="utf-8")
    except OSError as error:
        raise BenchError(f"cannot read {path}: {error.strerror}") from None
    parse_bench(path)
    closing = re.search(r"</([^>\s]+)\s*>\s*(?:<!--.*?-->\s*)*\Z", text, re.S)
    if closing is None:
        raise BenchError(f"{path} has no closing root tag to add to")
    line_start = text.rfind("\n", 0, closing.start()) + 1
    prefix = text[line_start:closing.start()]
    newline = "\r\n" if "\r\n" in text else "\n"
    if prefix.strip():
        insert_at, line = closing.start(), newline + "  " + element + newline
        line_number = text.count("\n", 0, insert_at) + 2
    else:
        insert_at, line = line_start, prefix + "  " + element + newline
        line_number = text.count("\n", 0, insert_at) + 1
    save(path, text[:insert_at] + line + text[insert_at:])
    return line_number


def inject_element(export, status, detail=0):
    """The INJECT element of one injection, its values as the library reads
    them (names or numbers)."""
    def shown(value):
        return value.name if hasattr(value, "name") else str(value)
    return (f'<INJECT export="{export}" status="{shown(status)}" '
            f'detail="{shown(detail)}"/>')
