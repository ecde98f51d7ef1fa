"""Where each answer came from (the library's log), and the bus trace and
session report a session turns on."""

import json
import re
import subprocess
import sys
from collections import Counter

import can
import pytest

from cansimu import CansimuError, Session
from cansimu.isotp import Reassembler
from cansimu.sources import parse_source

from conftest import EXAMPLES


def entry_line(scenario, request):
    """The line of the EVENEMENT whose request is `request`, read from the file."""
    lines = scenario.read_text(encoding="utf-8").splitlines()
    asked = next(i for i, text in enumerate(lines) if f"<TRAME>{request}</TRAME>" in text)
    return next(i for i in range(asked, -1, -1) if "<EVENEMENT>" in lines[i]) + 1


@pytest.mark.parametrize("request_hex, pattern", [
    ("22F190", "22F190"),
    ("22F4A0", "22F4??"),  # a wildcard entry: the source names the pattern, not the request
])
def test_a_scripted_answer_names_its_entry(cansimu_bench, request_hex, pattern):
    (answer,) = cansimu_bench.ask("engine", request_hex)
    source = answer.source
    assert (source.kind, source.ecu, source.request) == ("entry", "7e0/7e8", request_hex)
    assert (source.file_name, source.pattern, source.index, source.count) == \
        ("engine.xml", pattern, 1, 1)
    assert source.line == entry_line(cansimu_bench.scenario("engine"), pattern)


def test_a_rotation_counts_its_responses_and_a_broadcast_each_ecu(cansimu_bench):
    with cansimu_bench.channel("engine") as engine:
        turns = [engine.ask("22DD01")[0].source for _ in range(4)]
    assert [(s.index, s.count) for s in turns] == [(1, 3), (2, 3), (3, 3), (1, 3)]
    with cansimu_bench.broadcast("3E00") as everyone:
        answers = everyone.read()
    by_ecu = {ecu.address: ecu for ecu in cansimu_bench.ecus}
    for answer in answers:
        ecu = by_ecu[answer.responder]
        assert answer.source.ecu == f"{ecu.id_tx:x}/{ecu.id_rx:x}"
        assert answer.source.file_name == ecu.scenario


def test_unscripted_requests_and_events_without_an_answer(cansimu_bench):
    (fallback,) = cansimu_bench.ask("engine", "2201")
    assert fallback.data == bytes.fromhex("7F2211")
    assert (fallback.source.kind, fallback.source.reason, fallback.source.file,
            fallback.source.problem) == ("no entry", "negative fallback", None, None)
    # A typed answer that no ECU frame carries gets no source.
    (silent,) = cansimu_bench.ask("body", "1101")
    assert silent.responder is None and silent.source is None

    cansimu_bench.edit("engine.xml", "<S>\n<EVENEMENT>\n</S>\n")
    (broken,) = cansimu_bench.ask("engine", "22F190")
    assert broken.data[:1] == b"\x7f"
    assert (broken.source.kind, broken.source.file_name) == ("no entry", "engine.xml")
    assert re.fullmatch(r"line \d+: .+", broken.source.problem)


@pytest.mark.parametrize("line, expected", [
    (r"X: Answer source: ECU 710/77a, request 1003: dialog closed: OPENDIALOG answered FALSE "
     r"at <C:\b\gw.xml>:7", {"kind": "dialog closed", "file": r"C:\b\gw.xml", "line": 7}),
    ("X: Answer source: ECU 710/77a, request 1003: no scenario: the file could not be read\r",
     {"kind": "no scenario", "file": None, "line": None}),
    ("X: Answer source: ECU 745/765, request 3E00: no entry: not answered on this channel",
     {"kind": "no entry", "reason": "not answered on this channel"}),
    ("X: Answer source: ECU 7e0/7e8, request 22: something the parser does not know", None),
    ("X: Response [7E00]", None),
])
def test_source_lines_of_every_kind(line, expected):
    source = parse_source(line)
    if expected is None:
        assert source is None
    else:
        assert {key: getattr(source, key) for key in expected} == expected
        assert not source.text.endswith("\r")


def test_outputs_cannot_be_asked_of_a_library_already_loaded(cansimu_bench, tmp_path):
    with pytest.raises(CansimuError, match="already loaded in this process.*CANSIMU_TRACE"):
        Session(cansimu_bench.bench, trace=tmp_path / "bus.log")


# The library reads CANSIMU_TRACE and CANSIMU_REPORT when it loads: a
# process of its own, whose session loads it. Relative paths count from
# the working directory the session started in.
SCRIPT = """
import json, sys
from cansimu import Session
asked, answers = json.loads(sys.argv[2]), []
with Session(sys.argv[1], trace="bus.log", report="report.json") as session:
    for request in asked:
        answers.append(session.ask("engine", request)[0].data.hex())
    while_open = session.report()
print(json.dumps({"answers": answers, "open": while_open, "closed": session.report(),
                  "trace": str(session.trace_path)}))
"""


def test_report_and_trace_of_a_scripted_session(tmp_path):
    asked = ["22F190", "2201", "22DD01", "22F190", "22DD01", "22DD01"]
    done = subprocess.run([sys.executable, "-c", SCRIPT, str(EXAMPLES / "bench.xml"),
                           json.dumps(asked)], capture_output=True, text=True, check=True,
                          cwd=tmp_path)
    run = json.loads(done.stdout)
    assert run["trace"] == str(tmp_path / "bus.log")
    assert (run["open"]["ended"], run["closed"]["ended"]) == (False, True)
    (engine,) = [ecu for ecu in run["closed"]["ecus"] if ecu["idTx"] == "7e0"]
    hits = {entry["pattern"]: entry["hits"] for entry in engine["entries"]}
    unscripted = {u["request"]: u["count"] for u in engine["unscripted"]}
    scripted = Counter(request for request in asked if request in hits)
    assert {p: n for p, n in hits.items() if n} == dict(scripted)
    assert unscripted == {r: n for r, n in Counter(asked).items() if r not in hits}
    assert engine["answers"] == len(asked)
    assert engine["negativeAnswers"] == sum(a.startswith("7f") for a in run["answers"])

    # The trace holds the engine's answers as ISO-TP frames on its idRx.
    reassembler, payloads = Reassembler(), []
    with can.CanutilsLogReader(run["trace"]) as trace:
        frames = [message for message in trace if message.arbitration_id == 0x7E8]
    for message in frames:
        payload = reassembler.feed(message.data)
        if payload is not None:
            payloads.append(payload.hex())
    assert payloads == run["answers"]
    # The 20-byte VIN: a first frame (6 bytes) and two consecutive frames (7 each).
    assert len(bytes.fromhex(payloads[0])) == 20
    assert [(f.data[0], len(f.data)) for f in frames[:3]] == [(0x10, 8), (0x21, 8), (0x22, 8)]
