"""Trace conversion: a candump log written by python-can through every
format python-can writes and back, and the files it must refuse."""

import can
import pytest

from cansimu.convert import ConversionError, convert

START = 1700000000.123456


def sent_frames():
    return [can.Message(timestamp=START + i * 0.0105, channel="can0",
                        arbitration_id=0x18DAF110 + i if i % 3 == 0 else (0x101 * i) & 0x7FF,
                        is_extended_id=i % 3 == 0, data=bytes(range(i % 9)))
            for i in range(20)]


@pytest.fixture
def candump(tmp_path):
    with can.Logger(str(tmp_path / "trace.log")) as writer:
        for message in sent_frames():
            writer.on_message_received(message)
    return tmp_path / "trace.log"


def described(messages):
    """What a frame is, whatever the format: identifier, kind, data, and its
    time from the first frame (formats differ on the start time and on how
    they name the channel, so neither is compared)."""
    first = messages[0].timestamp
    return [(m.arbitration_id, m.is_extended_id, m.is_remote_frame, bytes(m.data),
             round(m.timestamp - first, 5)) for m in messages]


@pytest.mark.parametrize("extension", [".asc", ".blf", ".trc", ".csv", ".db"])
def test_a_trace_goes_there_and_back_with_identical_frames(candump, tmp_path, extension):
    there, back = tmp_path / f"trace{extension}", tmp_path / "back.log"
    assert convert(candump, there) == 20
    assert convert(there, back) == 20
    assert described(list(can.LogReader(str(back)))) == described(sent_frames())


@pytest.mark.parametrize("name, cut, problem", [
    ("trace.log", -7, "stopped after 19 frames"),
    ("trace.blf", 0.5, "stopped at its start"),
    ("trace.trc", -7, "stopped after 19 frames: TRCReader"),
    ("trace.mf4", None, "reads no '.mf4'"),
    ("missing.asc", None, "no such trace"),
])
def test_unreadable_traces_are_refused_and_leave_no_output(candump, tmp_path, name, cut,
                                                          problem):
    source = tmp_path / name
    if cut is not None:
        if source.suffix != ".log":
            convert(candump, source)
        data = (candump if source.suffix == ".log" else source).read_bytes()
        source.write_bytes(data[:cut if isinstance(cut, int) else int(len(data) * cut)])
    elif name != "missing.asc":
        source.write_bytes(candump.read_bytes())
    with pytest.raises(ConversionError, match=problem):
        convert(source, tmp_path / "out.asc")
    assert not (tmp_path / "out.asc").exists()
