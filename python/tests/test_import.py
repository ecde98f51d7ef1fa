"""Importing recorded traffic: one session in the formats python-can writes,
the transport cases, bad input, and the round trip through the library's own
trace and `cansimu ask`."""

import os
import re
import shutil
import subprocess
from pathlib import Path

import can
import pytest

from cansimu import isotp
from cansimu.__main__ import main
from cansimu.importer import ImportFailure, Importer, import_traces

from conftest import EXAMPLES  # noqa: E402

START = 1700000000.0


def program():
    """The cansimu program built beside the library the run uses."""
    library = os.environ.get("CANSIMU_LIBRARY")
    beside = library and Path(library).resolve().parents[1] / "tools" / "cansimu"
    found = os.environ.get("CANSIMU_PROGRAM") or (beside if beside and beside.is_file()
                                                  else shutil.which("cansimu"))
    return Path(found) if found else None


def exchange(tx, rx, request, answer, extended=False, flow_control=True, padding=0xAA):
    """The frames of one request and its answer, as a tester and an ECU
    send them (flow control from the tester after a first frame)."""
    frames = [(tx, frame, extended) for frame in isotp.segment(request, padding)]
    answered = isotp.segment(answer, padding)
    frames.append((rx, answered[0], extended))
    if len(answered) > 1 and flow_control:
        frames.append((tx, isotp.FlowControl(isotp.FlowStatus.CONTINUE, 0, 0).frame(padding),
                       extended))
    frames += [(rx, frame, extended) for frame in answered[1:]]
    return frames


SUPPRESSED = (0x7E0, b"\x02\x3E\x80\xAA\xAA\xAA\xAA\xAA", False)  # asks for no answer
VIN = b"\x62\xF1\x90" + b"VF1SIMU0000000042"
SESSION = (
    exchange(0x7E0, 0x7E8, b"\x10\x03", b"\x50\x03\x00\x32\x01\xF4")
    + exchange(0x7E0, 0x7E8, b"\x22\xF1\x90", VIN)
    + [(0x123, b"\x11\x22\x33\x44", False)]  # a periodic frame, no diagnostics
    + exchange(0x7E0, 0x7E8, b"\x22\xDD\x01", b"\x62\xDD\x01\x03\x20")
    + exchange(0x7E0, 0x7E8, b"\x22\xDD\x01", b"\x62\xDD\x01\x0B\x54")
    + exchange(0x7E0, 0x7E8, b"\x31\x01\xFF\x00", b"\x7F\x31\x78")
    + [(0x7E8, b"\x05\x71\x01\xFF\x00\x00\xAA\xAA", False)]
    + exchange(0x7DF, 0x7E8, b"\x3E\x00", b"\x7E\x00")
    + [(0x7E9, b"\x02\x7E\x00\xAA\xAA\xAA\xAA\xAA", False)]
    + [SUPPRESSED]
    + exchange(0x710, 0x77A, b"\x22\xF1\x8C", b"\x62\xF1\x8C" + b"GW-0001")
    + exchange(0x18DA10F1, 0x18DAF110, b"\x19\x02\xFF", b"\x59\x02\xFF\x03\x01\x00\x2F",
               extended=True)
    + exchange(0x18DB33F1, 0x18DAF110, b"\x3E\x00", b"\x7E\x00", extended=True)
    + [(0x123, b"\x11\x22\x33\x45", False)]
)

SESSION_SCENARIOS = {
    "ecu_7E0": {"1003": ["5003003201F4"], "22F190": [VIN.hex().upper()],
                "22DD01": ["62DD010320", "62DD010B54"], "3101FF00": ["7101FF0000"],
                "3E00": ["7E00"]},
    "ecu_7E1": {"3E00": ["7E00"]},
    "ecu_710": {"22F18C": ["62F18C" + b"GW-0001".hex().upper()]},
    "ecu_18DA10F1": {"1902FF": ["5902FF0301002F"], "3E00": ["7E00"]},
}


def write_log(path, frames, times=None):
    """A candump log of the frames, 1 ms apart or at the `times` given (s)."""
    with can.Logger(str(path)) as writer:
        for number, (can_id, data, extended) in enumerate(frames):
            writer.on_message_received(can.Message(
                timestamp=START + (times[number] if times else number * 0.001),
                arbitration_id=can_id, channel="can0", is_extended_id=extended, data=data,
                is_fd=len(data) > 8))
    return path


def scripted(importer):
    return {ecu.name: {request: entry.answers for request, entry in ecu.scripted().items()}
            for ecu in importer.answering()}


def imported(path, links=()):
    importer = Importer(links)
    importer.read(path)
    return importer


def test_the_session_is_paired_per_ecu_with_rotations_and_functional_answers(tmp_path):
    importer = imported(write_log(tmp_path / "bus.log", SESSION))
    assert scripted(importer) == SESSION_SCENARIOS
    engine = importer.ecus[0]
    assert (engine.requests, len(engine.entries), engine.answers, engine.pending_dropped,
            engine.unanswered) == (7, 5, 6, 1, {"3E80": [1, engine.unanswered["3E80"][1]]})
    assert engine.unanswered["3E80"][1].frame == SESSION.index(SUPPRESSED) + 1
    assert importer.other_frames[0x123, False] == 2


def _answer(request, payload, **options):
    return exchange(0x7E0, 0x7E8, request, payload, **options)


LONG = b"\x62\xF1\x90" + bytes(range(197))  # 29 consecutive frames: the sequence wraps


def _swapped(frames, first, second):
    frames = list(frames)
    frames[first], frames[second] = frames[second], frames[first]
    return frames


@pytest.mark.parametrize("frames, scenarios, errors, unanswered", [
    pytest.param(_answer(b"\x22\xF1\x90", b"\x62\xF1\x90\x01", padding=0xCC),
                 {"22F190": ["62F19001"]}, 0, 0, id="single frames, padding dropped"),
    pytest.param(_answer(b"\x22\xF1\x90", LONG), {"22F190": [LONG.hex().upper()]}, 0, 0,
                 id="first and consecutive frames, sequence wrapping at 15"),
    pytest.param(_answer(b"\x22\xF1\x90", LONG, flow_control=False),
                 {"22F190": [LONG.hex().upper()]}, 0, 0, id="flow control not recorded"),
    pytest.param([(0x7E0, b"\x03\x22\xF1\x90", False), (0x7E0, b"\x02\x3E\x80", False),
                  (0x7E8, b"\x04\x62\xF1\x90\x01", False)], {"22F190": ["62F19001"]}, 0, 1,
                 id="tester present while the ECU works on a request"),
    pytest.param(_answer(b"\x2E\xF1\x90" + bytes(20), b"\x6E\xF1\x90", padding=None),
                 {"2EF190" + "00" * 20: ["6EF190"]}, 0, 0, id="multi-frame request"),
    pytest.param(_swapped(_answer(b"\x22\xF1\x90", LONG), 4, 5)
                 + _answer(b"\x22\xF1\x90", b"\x62\xF1\x90\x02"),
                 {"22F190": ["62F19002"]}, 1, 1, id="consecutive frame out of order"),
    pytest.param([(0x7E0, b"\x03\x22\xF1\x90", False),
                  (0x7E8, b"\x1F\xFF\x62\xF1\x90\x00\x00\x00", False),
                  (0x7E8, b"\x21" + bytes(7), False)], {}, 1, 1,
                 id="first frame of 4095 bytes that never arrive"),
    pytest.param([(0x7E0, b"\x03\x22\xF1\x90", False),
                  (0x7E8, b"\x1F\xFF\x62\xF1\x90\x00\x00\x00", False)]
                 + _answer(b"\x10\x01", b"\x50\x01"), {"1001": ["5001"]}, 1, 1,
                 id="a long answer abandoned for a new exchange"),
    pytest.param([(0x7E0, b"\x02\x10\x01", False), (0x7E8, bytes(12) + b"\x50\x01", False),
                  (0x7E0, b"\x02\x10\x03", False),
                  (0x7E8, b"\x00\x0A\x50\x03" + bytes(8) + b"\xCC" * 4, False)],
                 {"1003": ["50030000000000000000"]}, 1, 1, id="CAN FD single frame escape"),
])
def test_transport_cases(tmp_path, frames, scenarios, errors, unanswered):
    importer = imported(write_log(tmp_path / "bus.log", frames))
    assert scripted(importer) == ({"ecu_7E0": scenarios} if scenarios else {})
    engine = importer.ecus[0]
    assert (engine.transport_errors,
            sum(count for count, _ in engine.unanswered.values())) == (errors, unanswered)


def test_interleaved_29_bit_and_11_bit_conversations_and_an_ecu_named_by_the_user(tmp_path):
    long = exchange(0x18DA40F1, 0x18DAF140, b"\x22\xF1\x90", LONG, extended=True)
    short = exchange(0x600, 0x601, b"\x11\x01", b"\x51\x01")
    frames = long[:3] + short[:1] + long[3:10] + short[1:] + long[10:]
    importer = imported(write_log(tmp_path / "bus.log", frames),
                        links=[(0x600, 0x601, False, "door")])
    assert scripted(importer) == {"door": {"1101": ["5101"]},
                                  "ecu_18DA40F1": {"22F190": [LONG.hex().upper()]}}


def test_a_request_that_begins_another_is_reported_not_scripted(tmp_path):
    frames = _answer(b"\x22\xF1", b"\x7F\x22\x13") + _answer(b"\x22\xF1\x90", VIN)
    report, _ = import_traces([write_log(tmp_path / "bus.log", frames)], tmp_path / "out")
    assert "22F1" in (tmp_path / "out" / "ecu_7E0.xml").read_text()
    assert "22F190" not in (tmp_path / "out" / "ecu_7E0.xml").read_text()
    assert any(line.startswith("  not scripted: 22F190: overlaps 22F1") for line in report)


@pytest.mark.parametrize("name, content, message", [
    ("bus.xyz", "", "python-can reads no '.xyz' trace"),
    ("missing.log", None, "no such trace"),
    ("empty.log", "", "no diagnostic exchange found"),
    ("quiet.log", "(1.0) can0 123#1122\n(1.1) can0 7E0#023E80\n",
     "no diagnostic exchange found"),
])
def test_traces_with_nothing_to_import_are_refused(tmp_path, name, content, message):
    if content is not None:
        (tmp_path / name).write_text(content)
    with pytest.raises(ImportFailure, match=re.escape(message)):
        import_traces([tmp_path / name], tmp_path / "out")
    assert not (tmp_path / "out").exists()


def test_a_truncated_trace_imports_what_was_read_and_says_where_it_stopped(tmp_path):
    log = write_log(tmp_path / "bus.log", SESSION)
    text = log.read_text()
    cut = tmp_path / "cut.log"
    cut.write_text(text[:text.index("can0 710")] + "(17")
    report, _ = import_traces([cut], tmp_path / "out")
    assert report[1].startswith("cut.log: reading stopped after ")
    assert "ecu_710" not in (tmp_path / "out" / "bench.xml").read_text()


def test_the_command_writes_once_then_needs_force_and_dry_run_writes_nothing(tmp_path, capsys):
    log = write_log(tmp_path / "bus.log", SESSION)
    out = tmp_path / "out"
    assert main(["import", str(log), "--out", str(out), "--dry-run"]) == 0
    assert not out.exists() and "ECU ecu_7E0 (7E0/7E8): 7 requests" in capsys.readouterr().out
    assert main(["import", str(log), "--out", str(out), "--ecu", "710/77A=gateway"]) == 0
    assert sorted(p.name for p in out.iterdir()) == [
        "bench.xml", "ecu_18DA10F1.xml", "ecu_7E0.xml", "ecu_7E1.xml", "gateway.xml"]
    assert main(["import", str(log), "--out", str(out)]) == 1
    assert "--force" in capsys.readouterr().err
    (tmp_path / "a-file").write_text("")
    assert main(["import", str(log), "--out", str(tmp_path / "a-file"), "--force"]) == 1
    assert "is a file" in capsys.readouterr().err
    for wrong in ("7E0", "7E0/7E8=bench", "7E0/XYZ"):
        assert main(["import", str(log), "--out", str(tmp_path / "o"), "--ecu", wrong]) == 1
        assert capsys.readouterr().err.startswith(f"cansimu import: --ecu {wrong}: ")
    assert main(["import", str(log), "--out", str(out), "--force"]) == 0


def run_program(*arguments, cwd, trace=None):
    found = program()
    if found is None or not found.is_file():
        pytest.skip("the cansimu program is not built (set CANSIMU_PROGRAM)")
    environment = dict(os.environ)
    if trace:
        environment["CANSIMU_TRACE"] = str(trace)  # read once, when the library loads
    command = [str(found), *arguments]
    if os.environ.get("CANSIMU_LIBRARY"):
        command += ["--library", os.environ["CANSIMU_LIBRARY"]]
    return subprocess.run(command, cwd=cwd, env=environment, capture_output=True, text=True)


ASKED = {"engine": ("7E0", ["1003", "22F190", "22DD01", "22DD01", "22DD01", "22DD01",
                            "2701", "1902FF"]),
         "gateway": ("710", ["22F190", "1001", "22F190", "22DD10"]),
         "body": ("745", ["22D001", "3E00", "22F187"])}


def frames_of(trace):
    with can.LogReader(str(trace)) as reader:
        return [(m.arbitration_id, bytes(m.data)) for m in reader]


def test_a_traced_session_imported_answers_the_same_requests_the_same_way(tmp_path):
    bench = tmp_path / "examples"
    shutil.copytree(EXAMPLES, bench)
    recorded = []
    for name, (_, requests) in ASKED.items():
        trace = tmp_path / f"{name}.log"
        asked = run_program("ask", str(bench / "bench.xml"), name, *requests, cwd=bench,
                            trace=trace)
        assert asked.returncode == 0, asked.stderr
        recorded.append(trace)
    # The gateway's and the body's identifiers follow no convention: their
    # answers pair them.
    import_traces(recorded, tmp_path / "imported")
    assert run_program("check", "bench.xml", cwd=tmp_path / "imported").returncode == 0
    for trace, (name, (id_tx, requests)) in zip(recorded, ASKED.items()):
        replay = tmp_path / f"replay-{name}.log"
        asked = run_program("ask", "bench.xml", id_tx, *requests, cwd=tmp_path / "imported",
                            trace=replay)
        assert asked.returncode == 0, asked.stderr
        assert frames_of(replay) == frames_of(trace)


@pytest.mark.parametrize("values, rotation", [
    ("AAAA", "A"),
    ("ABABA", "AB"),  # the cycle gives the recorded order, then goes on
    ("ABCA", "ABC"),
    ("AAB", "AAB"),
    ("ABAAB", "ABA"),
])
def test_the_rotation_is_the_shortest_cycle_giving_the_recorded_answers(tmp_path, values,
                                                                       rotation):
    frames = [frame for value in values
              for frame in _answer(b"\x22\xDD\x01", b"\x62\xDD\x01" + value.encode())]
    import_traces([write_log(tmp_path / "bus.log", frames)], tmp_path / "out")
    written = re.findall(r"<TRAME>62DD01(\w\w)</TRAME>",
                         (tmp_path / "out" / "ecu_7E0.xml").read_text())
    assert "".join(bytes.fromhex(v).decode() for v in written) == rotation


@pytest.mark.parametrize("pendings, answered, attributes", [
    ([0.010, 0.110, 0.210], 0.400, 'pending="3" every="100" delay="100"'),
    ([0.010], 0.250, 'pending="1" every="0" delay="250"'),
    ([], 0.020, None),  # no pending answer: a plain entry
])
def test_response_pending_answers_become_the_entry_timing(tmp_path, pendings, answered,
                                                          attributes):
    """The library sends the first pending answer at once, the next ones
    `every` ms apart, the answer `delay` ms after the last pending slot: the
    written attributes replay the recorded times."""
    frames = ([(0x7E0, b"\x04\x31\x01\xFF\x00\xAA\xAA\xAA", False)]
              + [(0x7E8, b"\x03\x7F\x31\x78\xAA\xAA\xAA\xAA", False)] * len(pendings)
              + [(0x7E8, b"\x05\x71\x01\xFF\x00\x00\xAA\xAA", False)])
    path = write_log(tmp_path / "bus.log", frames, [0.0, *pendings, answered])
    import_traces([path], tmp_path / "out")
    text = (tmp_path / "out" / "ecu_7E0.xml").read_text()
    opening = re.search(r"<EVENEMENT( [^>]*)?>\s*<REQUETE><TRAME>3101FF00", text).group(1)
    assert (opening.strip() if opening else None) == attributes
    assert "<TRAME>7101FF0000</TRAME>" in text and "7F3178" not in text
