"""Scenarios from recorded traffic: a bench and one scenario per ECU built
from bus traces (candump logs, ASC, BLF, TRC, CSV, SQLite: whatever
python-can's LogReader reads).

The traces are streamed frame by frame; what is kept is what gets written
(the distinct requests and their answers) and a few counters, so a long
recording costs time, not memory. Each identifier's frames are reassembled
by the package's ISO-TP reassembler. Requests and answers are paired per
ECU, an ECU being a pair of identifiers found by the common conventions
(7E0..7E7 answered on +8; 18DA tt ss answered on 18DA ss tt, the tester
being the address F0 and above), named by the user (--ecu 710/77A=gateway),
or found by the answers themselves: a message whose first byte is the
service of another identifier's pending request plus 40, or 7F and that
service. Functional requests (7DF, 18DB33F1) go to every ECU that answers
them. Response-pending answers (7F xx 78) are not scripted as answers: the
final answer is, and the entry carries how it came (the timing attributes
pending, every and delay of a scenario entry, as first recorded).
"""

import logging
from dataclasses import dataclass, field
from pathlib import Path

import can

from . import isotp
from .convert import READ_FORMATS, _suffix


class ImportFailure(Exception):
    """Traces that give nothing to import, or an output that may not be
    written."""


FUNCTIONAL = {(0x7DF, False), (0x18DB33F1, True)}
PENDING = 0x78
ANSWER_WINDOW = 5.0  # seconds: the longest an ECU takes (P2* server max) to answer
DETAILS = 20  # transport errors and warnings listed in full per ECU or trace


@dataclass(frozen=True)
class Position:
    """Where a message started: trace file, frame number from 1, time."""

    trace: str
    frame: int
    timestamp: float

    def __str__(self):
        return f"{self.trace} frame {self.frame} (t={self.timestamp:.6f})"


@dataclass
class Entry:
    first: Position
    answers: list = field(default_factory=list)
    timing: tuple = None  # (pending, every ms, delay ms) of the first answer that had any


def timing_of(asked, pendings, answered):
    """The scenario timing of an answer recorded at `answered` seconds, after
    response-pending answers at `pendings`, to a request at `asked`: the
    library sends the first pending answer at once, the next ones `every`
    ms apart, and the answer `delay` ms after the last pending slot."""
    count = len(pendings)
    every = round((pendings[-1] - pendings[0]) * 1000 / (count - 1)) if count > 1 else 0
    delay = max(0, round((answered - asked) * 1000) - count * every)
    return count, every, delay


def answers(payload, request):
    """Whether `payload` is a positive or negative answer to `request`."""
    if payload[0] == 0x7F:
        return len(payload) >= 3 and payload[1] == request[0]
    return payload[0] == request[0] + 0x40


def _hex_id(can_id, extended):
    return f"{can_id:08X}" if extended else f"{can_id:03X}"


class Ecu:
    """One ECU: the identifier its tester sends on, the one it answers on,
    what it was asked and answered."""

    def __init__(self, tx, rx, extended, name=None):
        self.tx, self.rx, self.extended = tx, rx, extended
        self.name = name or f"ecu_{_hex_id(tx, extended)}"
        self.entries = {}  # request hex -> Entry, in first-seen order
        # Requests awaiting an answer, one per service: a tester keeps a
        # session alive with tester present (often asking for no answer)
        # while an ECU works on a request, so answers pair by service.
        self.pending = {}  # service -> (request bytes, Position)
        self.requests = 0
        self.answers = 0
        self.pending_dropped = 0
        self.pending_times = {}  # service -> times of its response-pending answers
        self.unsolicited = 0
        self.unanswered = {}  # request hex -> [count, first Position]
        self.transport_errors = 0
        self.error_lines = []
        self.non_diagnostic = 0
        self.not_scripted = []  # (request hex, reason)
        self._texts = {}

    @property
    def label(self):
        return f"{self.name} ({_hex_id(self.tx, self.extended)}/{_hex_id(self.rx, self.extended)})"

    def error(self, position, text):
        self.transport_errors += 1
        if len(self.error_lines) < DETAILS:
            self.error_lines.append(f"{position}: {text}")

    def ask(self, request, position):
        self.pending_times.pop(request[0], None)
        if request[0] in self.pending:
            self.unanswer(*self.pending[request[0]])
        self.requests += 1
        self.pending[request[0]] = (request, position)

    def unanswer(self, request, position):
        seen = self.unanswered.setdefault(request.hex().upper(), [0, position])
        seen[0] += 1

    def answer(self, request, position, payload, timing=None):
        self.answers += 1
        entry = self.entries.get(request.hex().upper())
        if entry is None:
            entry = self.entries[request.hex().upper()] = Entry(position)
        if timing is not None and entry.timing is None:
            entry.timing = timing
        text = payload.hex().upper()
        entry.answers.append(self._texts.setdefault(text, text))  # one string per distinct answer

    def scripted(self):
        """The entries to write, in first-seen order. The library matches a
        request by its beginning, so of two requests where one begins the
        other only the first seen can be scripted; the other is reported."""
        kept, prefixes = {}, set()
        self.not_scripted = []
        for request, entry in self.entries.items():
            shorter = next((request[:n] for n in range(2, len(request), 2)
                            if request[:n] in kept), None)
            if shorter or request in prefixes:
                other = shorter or next(k for k in kept if k.startswith(request))
                self.not_scripted.append((request, f"overlaps {other}, scripted first "
                                                   "(a scenario request matches every "
                                                   "request it begins)"))
                continue
            kept[request] = entry
            prefixes.update(request[:n] for n in range(2, len(request), 2))
        return kept


class _Functional:
    """A functional request identifier and its request under way."""

    def __init__(self, can_id, extended):
        self.id, self.extended = can_id, extended
        self.requests = 0
        self.unanswered = {}
        self.pending = None  # (request, Position, set of answering ECUs)

    def close(self):
        if self.pending is not None and not self.pending[2]:
            seen = self.unanswered.setdefault(self.pending[0].hex().upper(),
                                              [0, self.pending[1]])
            seen[0] += 1
        self.pending = None


class _Sender:
    """The reassembly state of one identifier."""

    __slots__ = ("reassembler", "start", "owner")

    def __init__(self, owner):
        self.reassembler = isotp.Reassembler()
        self.start = None
        self.owner = owner  # (Ecu, "tx" or "rx"), a _Functional, or None (not known yet)


class _Complaints(logging.Handler):
    def __init__(self):
        super().__init__(logging.WARNING)
        self.messages = []

    def emit(self, record):
        self.messages.append(record.getMessage())


class Importer:
    """Feeds traces one after the other; `ecus` and the counters hold what
    they gave. `links` are the user's ECUs: (tx, rx, extended, name)."""

    def __init__(self, links=()):
        self.ecus = []
        self.senders = {}
        self.functionals = {}
        self.frames = 0
        self.trace_lines = []
        self.other_frames = {}  # identifier -> frames, for identifiers no ECU uses
        for tx, rx, extended, name in links:
            self._link(tx, rx, extended, name)
        for can_id, extended in FUNCTIONAL:
            functional = self.functionals[can_id, extended] = _Functional(can_id, extended)
            self.senders[can_id, extended] = _Sender(functional)
        self._candidates = {}  # service -> (identifier, request, Position): unpaired requests

    def _link(self, tx, rx, extended, name=None):
        ecu = Ecu(tx, rx, extended, name)
        self.ecus.append(ecu)
        for can_id, role in ((tx, "tx"), (rx, "rx")):
            sender = self.senders.get((can_id, extended))
            if sender is None:
                sender = self.senders[can_id, extended] = _Sender(None)
            sender.owner = (ecu, role)
            self.other_frames.pop((can_id, extended), None)
        return ecu

    def _conventional(self, can_id, extended):
        """The ECU an identifier belongs to by the common conventions."""
        if not extended and 0x7E0 <= can_id <= 0x7EF:
            tx = can_id & ~0x8
            return self._link(tx, tx + 8, False)
        if extended and can_id >> 16 == 0x18DA:
            target, source = can_id >> 8 & 0xFF, can_id & 0xFF
            swapped = 0x18DA0000 | source << 8 | target
            if source >= 0xF0 > target:
                return self._link(can_id, swapped, True)
            if target >= 0xF0 > source:
                return self._link(swapped, can_id, True)
        return None

    def read(self, path):
        """Feeds every frame of one trace."""
        path = Path(path)
        if _suffix(path) not in READ_FORMATS:
            raise ImportFailure(f"{path}: python-can reads no '{_suffix(path)}' trace "
                                f"(it reads {', '.join(READ_FORMATS)})")
        if not path.is_file():
            raise ImportFailure(f"{path}: no such trace")
        complaints = _Complaints()
        python_can = logging.getLogger("can")
        python_can.addHandler(complaints)
        count = 0
        try:
            with can.LogReader(str(path)) as reader:
                for message in reader:
                    count += 1
                    self._frame(message, Position(path.name, count, message.timestamp))
        except Exception as error:  # any reader's failure on a truncated or bad file
            self.trace_lines.append(f"{path.name}: reading stopped after {count} frames: "
                                    f"{type(error).__name__}: {error}")
        finally:
            python_can.removeHandler(complaints)
        for text in complaints.messages[:DETAILS]:
            self.trace_lines.append(f"{path.name}: python-can: {text}")
        if len(complaints.messages) > DETAILS:
            self.trace_lines.append(f"{path.name}: python-can: "
                                    f"{len(complaints.messages) - DETAILS} more warnings")
        if count == 0:
            self.trace_lines.append(f"{path.name}: no frames")
        self.frames += count
        self._end_of_trace(path.name)

    def _end_of_trace(self, name):
        """Transport and requests do not carry from one trace to the next."""
        for key, sender in self.senders.items():
            if sender.reassembler.receiving and isinstance(sender.owner, tuple):
                sender.owner[0].error(sender.start, f"{_hex_id(*key)}: message cut short "
                                                    f"by the end of {name}")
            sender.reassembler = isotp.Reassembler()
        for ecu in self.ecus:
            for pending in ecu.pending.values():
                ecu.unanswer(*pending)
            ecu.pending.clear()
        for functional in self.functionals.values():
            functional.close()
        self._candidates.clear()

    def _frame(self, message, position):
        key = (message.arbitration_id, bool(message.is_extended_id))
        sender = self.senders.get(key)
        if sender is None:
            sender = self.senders[key] = _Sender(None)
            ecu = self._conventional(*key)
            if ecu is None:
                self.other_frames[key] = 0
        owner = sender.owner
        if owner is None:
            self.other_frames[key] = self.other_frames.get(key, 0) + 1
        data = bytes(message.data)
        if message.is_error_frame or message.is_remote_frame or not data or data[0] >> 4 > 3:
            if isinstance(owner, tuple):
                owner[0].non_diagnostic += 1
            return
        kind = data[0] >> 4
        if kind == isotp.FrameType.FLOW_CONTROL:
            return  # the receiver's pacing: no payload
        if kind in (isotp.FrameType.SINGLE, isotp.FrameType.FIRST):
            if sender.reassembler.receiving and isinstance(owner, tuple):
                owner[0].error(sender.start, f"{_hex_id(*key)}: message abandoned, "
                                             f"a new one starts at frame {position.frame}")
            sender.start = position
        try:
            payload = sender.reassembler.feed(data)
        except isotp.IsoTpError as error:
            if isinstance(owner, tuple):
                owner[0].error(position, f"{_hex_id(*key)}: {error}; message skipped")
            return
        if payload:
            self._payload(key, sender, payload, sender.start)

    def _payload(self, key, sender, payload, position):
        owner = sender.owner
        if isinstance(owner, _Functional):
            owner.close()
            owner.requests += 1
            owner.pending = (payload, position, set())
            return
        if owner is None:
            self._discover(key, sender, payload, position)
            return
        ecu, role = owner
        if role == "tx":
            ecu.ask(payload, position)
            return
        self._answer(ecu, payload, position)

    def _answer(self, ecu, payload, position):
        service = payload[1] if payload[0] == 0x7F and len(payload) >= 3 else payload[0] - 0x40
        chosen = ecu.pending.get(service)
        functional = self.functionals[(0x18DB33F1, True) if ecu.extended else (0x7DF, False)]
        group = functional.pending
        if group is not None and ecu not in group[2] and answers(payload, group[0]) and \
                (chosen is None or group[1].frame > chosen[1].frame):
            chosen = group
        if chosen is None:
            ecu.unsolicited += 1
            return
        if payload[0] == 0x7F and payload[2] == PENDING:
            ecu.pending_dropped += 1
            if chosen is not group:
                ecu.pending_times.setdefault(service, []).append(position.timestamp)
            return
        timing = None
        if chosen is group:
            group[2].add(ecu)
            ecu.requests += 1
        else:
            del ecu.pending[service]
            pendings = ecu.pending_times.pop(service, None)
            if pendings:
                timing = timing_of(chosen[1].timestamp, pendings, position.timestamp)
        ecu.answer(chosen[0], chosen[1], payload, timing)

    def _discover(self, key, sender, payload, position):
        """A message on an identifier no ECU uses yet: an answer to another
        such identifier's recent request makes the two an ECU; else it may
        be a request."""
        service = payload[1] if payload[0] == 0x7F and len(payload) >= 3 else payload[0] - 0x40
        candidate = self._candidates.get(service)
        if candidate is not None and candidate[0] != key and candidate[0][1] == key[1] and \
                position.timestamp - candidate[2].timestamp <= ANSWER_WINDOW and \
                self.senders[candidate[0]].owner is None:
            del self._candidates[service]
            ecu = self._link(candidate[0][0], key[0], key[1])
            ecu.ask(candidate[1], candidate[2])
            self._answer(ecu, payload, position)
            return
        if payload[0] < 0x40 or 0x80 <= payload[0] < 0xC0:
            self._candidates[payload[0]] = (key, payload, position)

    # What was imported

    def answering(self):
        return [ecu for ecu in self.ecus if ecu.answers]

    def report(self):
        lines = [f"{self.frames} frames read"]
        lines += self.trace_lines
        for ecu in self.ecus:
            if not (ecu.requests or ecu.answers or ecu.transport_errors):
                continue
            unanswered = sum(count for count, _ in ecu.unanswered.values())
            lines.append(f"ECU {ecu.label}: {ecu.requests} requests, {len(ecu.entries)} "
                         f"distinct requests, {ecu.answers} answers, {unanswered} unanswered, "
                         f"{ecu.transport_errors} transport errors, {ecu.non_diagnostic} "
                         f"non-diagnostic frames")
            if ecu.pending_dropped:
                lines.append(f"  {ecu.pending_dropped} response-pending answers (7F xx 78), "
                             "written as the timing of their entries")
            if ecu.unsolicited:
                lines.append(f"  {ecu.unsolicited} answers to no request, kept out")
            for request, (count, first) in ecu.unanswered.items():
                lines.append(f"  unanswered: {request} x{count}, first at {first}")
            lines += [f"  transport error: {text}" for text in ecu.error_lines]
            if ecu.transport_errors > len(ecu.error_lines):
                lines.append(f"  {ecu.transport_errors - len(ecu.error_lines)} more "
                             "transport errors")
            ecu.scripted()
            lines += [f"  not scripted: {request}: {why}" for request, why in ecu.not_scripted]
        for functional in self.functionals.values():
            if functional.requests:
                unanswered = sum(count for count, _ in functional.unanswered.values())
                lines.append(f"functional {_hex_id(functional.id, functional.extended)}: "
                             f"{functional.requests} requests, {unanswered} answered by no ECU")
                for request, (count, first) in functional.unanswered.items():
                    lines.append(f"  unanswered: {request} x{count}, first at {first}")
        others = {k: v for k, v in self.other_frames.items() if v}
        if others:
            busiest = sorted(others.items(), key=lambda item: -item[1])[:10]
            lines.append(f"not diagnostics, kept out: {sum(others.values())} frames on "
                         f"{len(others)} identifiers ("
                         + ", ".join(f"{_hex_id(*k)} x{v}" for k, v in busiest)
                         + (", ..." if len(others) > 10 else "") + ")")
        return lines


BOX = """\
  <!-- The interface box, as in cansimu's example bench. -->
  <DEVICES SimulateUploadFailure="0">
    <CAN_DEVICESTATE>DEV_TYPE_RCON</CAN_DEVICESTATE>
    <CAN_SERIALNUMBER>SIMU-0001</CAN_SERIALNUMBER>
    <CAN_FIRMWAREVERSION BootVersion="B1.04" BootDate="12/03/24" BootCheckSum="A5C3"
                         AppVersion="A3.17" AppDate="02/09/25" AppCheckSum="7E21"/>
    <VOLTAGES VBatt="12.6" APCKelmora="12.4" APCDravik="5.0"/>
  </DEVICES>
"""

PORT = """\
  <PORT>
    <CANMESPHYS CanHmin="2.45" CanHmax="3.55" CanLmin="1.45" CanLmax="2.55"/>
    <DETBAUDRATE>E_SUCCESS</DETBAUDRATE>
    <NEGATIVE_RESPONSE>11</NEGATIVE_RESPONSE>
"""


def period(answers):
    """The shortest cycle the answers repeat from the start (KMP's failure
    function): the rotation that hands them out in the recorded order is that
    cycle, as the library starts a rotation again after its last answer."""
    border, failure = 0, [0] * len(answers)
    for index in range(1, len(answers)):
        while border and answers[index] != answers[border]:
            border = failure[border - 1]
        if answers[index] == answers[border]:
            border += 1
        failure[index] = border
    return answers[:len(answers) - failure[-1]] if answers else answers


def _comment(text):
    text = text.replace("--", "- -")
    return text + " " if text.endswith("-") else text


def scenario_text(ecu, sources):
    lines = ['<?xml version="1.0" encoding="UTF-8"?>',
             f"<!-- {_comment(f'{ecu.label}, imported from {sources}')} -->",
             "<SCENARIO>",
             "  <EVENEMENT>",
             "    <REQUETE><TRAME>OPENDIALOG</TRAME></REQUETE>",
             "    <REPONSE><TRAME>TRUE</TRAME></REPONSE>",
             "  </EVENEMENT>"]
    for request, entry in ecu.scripted().items():
        replies = period(entry.answers)
        seen = f"{len(entry.answers)} answers" if len(entry.answers) > 1 else "1 answer"
        lines.append(f"  <!-- {_comment(f'first seen at {entry.first}, {seen}')} -->")
        if entry.timing is None:
            lines.append("  <EVENEMENT>")
        else:
            lines.append('  <EVENEMENT pending="%d" every="%d" delay="%d">' % entry.timing)
        lines.append(f"    <REQUETE><TRAME>{request}</TRAME></REQUETE>")
        lines.append("    <REPONSE>" + "".join(f"<TRAME>{r}</TRAME>" for r in replies)
                     + "</REPONSE>")
        lines.append("  </EVENEMENT>")
    lines.append("</SCENARIO>")
    return "\n".join(lines) + "\n"


def _addresses(ecus):
    """A distinct one-byte target address per ECU: the target of a 18DA
    identifier, the low byte of an 11-bit one, else the first free."""
    taken, chosen = set(), []
    for ecu in ecus:
        wanted = ecu.tx >> 8 & 0xFF if ecu.extended else ecu.tx & 0xFF
        if wanted in taken:
            wanted = next(a for a in range(1, 256) if a not in taken)
        taken.add(wanted)
        chosen.append(wanted)
    return chosen


def bench_text(ecus, sources):
    lines = ['<?xml version="1.0" encoding="UTF-8"?>',
             f"<!-- {_comment(f'A bench imported from {sources}.')} -->",
             "<BENCH>", BOX.rstrip("\n"), PORT.rstrip("\n")]
    for ecu, address in zip(ecus, _addresses(ecus)):
        lines.append(f'    <UCE targetAddress="{address:02X}" '
                     f'idTx="{_hex_id(ecu.tx, ecu.extended)}" '
                     f'idRx="{_hex_id(ecu.rx, ecu.extended)}" scenario="{ecu.name}.xml"/>')
    lines += ["  </PORT>", "</BENCH>"]
    return "\n".join(lines) + "\n"


def parse_link(text):
    """--ecu TX/RX=NAME (NAME optional): identifiers in hex; above 7FF, or
    written with 8 digits, they are 29-bit."""
    try:
        ids, _, name = text.partition("=")
        tx_text, rx_text = ids.split("/")
        tx, rx = int(tx_text, 16), int(rx_text, 16)
    except ValueError:
        raise ImportFailure(f"--ecu {text}: write TX/RX=NAME, as 710/77A=gateway") from None
    if name and not all(c.isalnum() or c in "_-." for c in name):
        raise ImportFailure(f"--ecu {text}: a name of letters, digits, '_', '-', '.'")
    if name.lower() == "bench":
        raise ImportFailure(f"--ecu {text}: bench.xml is the bench's file; name the ECU "
                            "otherwise")
    extended = max(tx, rx) > 0x7FF or len(tx_text) > 3 or len(rx_text) > 3
    return tx, rx, extended, name or None


def import_traces(traces, out, links=(), dry_run=False, force=False):
    """Imports `traces` into the folder `out`. Returns (report lines, files
    written). Raises ImportFailure when there is nothing to import or the
    folder holds files and `force` is not given."""
    out = Path(out)
    if not traces:
        raise ImportFailure("no trace to import")
    if out.exists() and not out.is_dir():
        raise ImportFailure(f"{out}: is a file, not a folder")
    if not dry_run and out.exists() and any(out.iterdir()) and not force:
        raise ImportFailure(f"{out}: exists and is not empty; --force overwrites it")
    importer = Importer(links)
    for trace in traces:
        importer.read(trace)
    report = importer.report()
    ecus = importer.answering()
    if not ecus:
        raise ImportFailure("no diagnostic exchange found (no request answered by an ECU):\n"
                            + "\n".join(report))
    names = [ecu.name for ecu in ecus]
    duplicates = {n for n in names if names.count(n) > 1}
    if duplicates:
        raise ImportFailure(f"two ECUs named {', '.join(sorted(duplicates))}")
    sources = ", ".join(Path(t).name for t in traces)
    files = {out / "bench.xml": bench_text(ecus, sources)}
    for ecu in ecus:
        files[out / f"{ecu.name}.xml"] = scenario_text(ecu, sources)
    if not dry_run:
        try:
            out.mkdir(parents=True, exist_ok=True)
            for path, text in files.items():
                path.write_text(text, encoding="utf-8")
        except OSError as error:
            raise ImportFailure(f"{out}: cannot be written: {error}") from None
    return report, list(files)
