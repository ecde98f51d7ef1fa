"""The "Answer source" lines of the library's log, parsed.

After each ECU answer the library logs where it came from, when somebody
reads its log (CANSIMU_LOG):

    Answer source: ECU 7e0/7e8, request 22F190: entry <engine.xml>:38 22F190, response 1 of 2
    Answer source: ECU 7e0/7e8, request 2201: no entry: negative fallback
    Answer source: ECU 7e0/7e8, request 2201: no entry: negative fallback (the scenario
        <engine.xml> does not parse: line 14: Start-end tags mismatch)
    Answer source: ECU 7e0/7e8, request 1003: dialog closed: OPENDIALOG answered FALSE at <x.xml>:9
    Answer source: ECU 7e0/7e8, request 1003: no scenario: the file could not be read

(the parse problem is on the same line). Only what a line says is kept.
"""

import os
import re
from dataclasses import dataclass

MARKER = "Answer source: "

_HEAD = re.compile(r"ECU (?P<ecu>[0-9a-f]+/[0-9a-f]+), request (?P<request>[0-9A-Fa-f?]*): "
                   r"(?P<reason>.*)$")
_ENTRY = re.compile(r"entry <(?P<file>[^>]*)>:(?P<line>\d+) (?P<pattern>\S+), "
                    r"response (?P<index>\d+) of (?P<count>\d+)$")
_NO_ENTRY = re.compile(r"no entry: (?P<why>.*?)"
                       r"(?: \(the scenario <(?P<file>[^>]*)> does not parse: "
                       r"(?P<problem>.*)\))?$")
_DIALOG = re.compile(r"dialog closed: .* at <(?P<file>[^>]*)>:(?P<line>\d+)$")
_NO_SCENARIO = re.compile(r"no scenario: ")


@dataclass(frozen=True)
class AnswerSource:
    """Where one ECU answer came from. `kind` is "entry", "no entry",
    "dialog closed" or "no scenario"; `ecu` is "idTx/idRx" in lower-case
    hex. `file` and `line` locate the entry (or, for a closed dialog, the
    OPENDIALOG entry; for a scenario that does not parse, the file);
    `pattern`, `index` and `count` (the response of the rotation, from 1)
    are an entry's; `reason` is the text after "no entry: "; `problem` is
    the parser's message ("line 14: ...") of a scenario that does not
    parse. Whatever the line does not say is None; `text` is the line from
    "ECU" on."""

    kind: str
    ecu: str
    request: str
    text: str
    file: "str | None" = None
    line: "int | None" = None
    pattern: "str | None" = None
    index: "int | None" = None
    count: "int | None" = None
    reason: "str | None" = None
    problem: "str | None" = None

    @property
    def id_rx(self):
        return int(self.ecu.split("/")[1], 16)

    @property
    def file_name(self):
        """`file` without its folders."""
        return None if self.file is None else re.split(r"[/\\]", self.file)[-1]


def parse_source(line):
    """The AnswerSource of a log line holding "Answer source: ", None for
    any other line or one whose text does not have the documented shape."""
    start = line.find(MARKER)
    if start < 0:
        return None
    text = line[start + len(MARKER):].rstrip("\r\n")
    head = _HEAD.match(text)
    if head is None:
        return None
    common = dict(ecu=head["ecu"], request=head["request"], text=text)
    reason = head["reason"]
    if (found := _ENTRY.match(reason)) is not None:
        return AnswerSource("entry", file=found["file"], line=int(found["line"]),
                            pattern=found["pattern"], index=int(found["index"]),
                            count=int(found["count"]), **common)
    if (found := _NO_ENTRY.match(reason)) is not None:
        return AnswerSource("no entry", file=found["file"], reason=found["why"],
                            problem=found["problem"], **common)
    if (found := _DIALOG.match(reason)) is not None:
        return AnswerSource("dialog closed", file=found["file"], line=int(found["line"]),
                            **common)
    if _NO_SCENARIO.match(reason):
        return AnswerSource("no scenario", **common)
    return None


class LogFollower:
    """Reads the answer sources a log file gained since the last call."""

    def __init__(self, path):
        self.path = path
        self.offset = self._size()

    def _size(self):
        try:
            return os.path.getsize(self.path) if self.path else 0
        except OSError:
            return 0

    def skip(self):
        """Forgets what the file holds so far."""
        self.offset = self._size()

    def new_sources(self):
        if not self.path:
            return []
        try:
            with open(self.path, "rb") as file:
                file.seek(self.offset)
                data = file.read()
        except OSError:
            return []
        # Only whole lines: one still being written is read next time.
        whole = data[:data.rfind(b"\n") + 1]
        self.offset += len(whole)
        found = (parse_source(line) for line in whole.decode("utf-8", "replace").splitlines())
        return [source for source in found if source is not None]


__all__ = ["AnswerSource", "parse_source", "LogFollower", "MARKER"]
