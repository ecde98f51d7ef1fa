"""A Session on the example bench, as a test drives it: answers, raw frames,
injections, edits, and what happens on bad input and after close."""

import os

import pytest

import cansimu
from cansimu import ChannelEvent as Chn
from cansimu import ResultCode, Session, Status
from cansimu.binding import load_library

OK = Chn.CHN_TYPE_RCV_SUCCESS


@pytest.mark.parametrize("ecu, request_hex, kind, result, answer, responder, echoed", [
    ("engine", "22F190", OK, ResultCode.cOk, b"b\xf1\x90VF1SIMU0000000042", 0x10, None),
    ("engine", "2704", OK, ResultCode.cOk, bytes.fromhex("7F2711"), 0x10, None),
    ("0x10", "22F195", Chn.CHN_TYPE_RCV_CORRUPTED_FRAME, ResultCode.cLongueurTrameFausse,
     bytes.fromhex("62F1"), 0x10, None),
    ("7E0", "3101FF00", Chn.CHN_TYPE_RCV_FAILED_TIMEOUT, None, None, None, "3101FF00"),
    ("gateway", "2EF19801", Chn.CHN_TYPE_SEND_FAILED_TIMEOUT, None, None, None, "2EF19801"),
    ("body", "1101", Chn.CHN_TYPE_RCV_FAILED_NO_RESPONSE, None, None, None, "1101"),
])
def test_an_ecu_answers_what_its_scenario_says(cansimu_bench, ecu, request_hex, kind, result,
                                               answer, responder, echoed):
    (got,) = cansimu_bench.ask(ecu, request_hex)
    assert (got.type, got.result, got.data, got.responder) == (kind, result, answer, responder)
    assert got.request == (bytes.fromhex(echoed) if echoed else None)


def test_channels_broadcast_and_raw_frames(cansimu_bench):
    with cansimu_bench.channel("engine") as engine:
        speeds = [engine.ask("22DD01")[0].data.hex() for _ in range(4)]
    assert speeds == ["62dd010320", "62dd010b54", "62dd011770", "62dd010320"]
    with cansimu_bench.broadcast("3E00") as everyone:
        assert sorted(a.responder for a in everyone.read()) == [0x01, 0x10, 0x40]
        answers = everyone.ask("22F187")
    assert {a.responder: a.data[3:] for a in answers} == {
        0x10: b"8201234567", 0x01: b"GW-7760412", 0x40: b"BCM-4410"}
    # The raw frame path carries 8 bytes of the 20-byte answer, on the ECU's idRx.
    (frame,) = cansimu_bench.send_frame(0x7E0, "22F190")
    assert (frame.can_id, frame.data) == (0x7E8, b"b\xf1\x90VF1SI")


def test_injections_by_call_and_by_bench(cansimu_bench):
    cansimu_bench.inject("CAN_DevGetVersion", "E_BUSOFF")
    with pytest.raises(cansimu.StatusError) as failed:
        cansimu_bench.version()
    assert (failed.value.export, failed.value.status) == ("CAN_DevGetVersion", Status.E_BUSOFF)
    assert cansimu_bench.version().appVersion == "A3.17"

    cansimu_bench.inject("CAN_DevRxMsg", "DEV_TYPE_RESET", 0xF4)
    (event,) = cansimu_bench.device_events()
    assert (event.type, event.data) == (cansimu.DeviceEvent.DEV_TYPE_RESET, b"\xf4")

    cansimu_bench.inject_in_bench("CAN_ChnSendDiag", Status.E_INVALID)
    assert cansimu_bench.ask("engine", "22F190")[0].type == OK  # not read yet
    cansimu_bench.driver_events()
    with pytest.raises(cansimu.StatusError, match=r"CAN_ChnSendDiag answered E_INVALID \(4\)"):
        cansimu_bench.ask("engine", "22F190")


def test_a_bench_given_as_text_with_its_scenario():
    scenario = ("<S><EVENEMENT><REQUETE><TRAME>3E00</TRAME></REQUETE>"
                "<REPONSE><TRAME>7E00</TRAME></REPONSE></EVENEMENT></S>")
    bench = ('<BENCH><CAN_SERIALNUMBER>BOX-7</CAN_SERIALNUMBER>'
             '<UCE targetAddress="0x2A" idTx="6F1" idRx="6F9" scenario="one.xml"/>'
             '<UCE targetAddress="door" idTx="6F2" idRx="6FA" scenario="one.xml"/></BENCH>')
    with Session(bench, files={"one.xml": scenario}) as session:
        assert session.device_name == "BOX-7"
        assert session.ask(0x2A, "3E00")[0].data == b"\x7e\x00"
        # Without a one-byte address an ECU is left out of the host's table.
        with pytest.raises(cansimu.CansimuError, match="association table"):
            session.channel("6F2")


def test_close_releases_everything_even_after_a_failure(cansimu_bench):
    bench = cansimu_bench.bench
    channel = cansimu_bench.channel("engine")
    with pytest.raises(cansimu.CansimuError, match="already open"):
        Session(bench)
    cansimu_bench.close()
    folder = os.getcwd()
    for call in (lambda: channel.ask("3E00"), cansimu_bench.version,
                 lambda: cansimu_bench.ask("engine", "3E00")):
        with pytest.raises(cansimu.SessionClosedError):
            call()
    with pytest.raises(ZeroDivisionError):
        with Session(bench) as session:
            session.channel("engine")
            1 / 0
    assert os.getcwd() == folder
    with Session(bench) as session:  # the box and port were given back
        assert session.ask("engine", "3E00")[0].data == b"\x7e\x00"


def _write(path, data):
    path.write_bytes(data)
    return path


@pytest.mark.parametrize("make, message", [
    (lambda tmp: tmp / "missing.so", "no library at"),
    (lambda tmp: _write(tmp / "old.so", b"\x7fELF\x01\x01\x01" + bytes(57)), "is a 32-bit library"),
    (lambda tmp: _write(tmp / "text.so", b"not a library"), "not a shared library"),
])
def test_a_library_that_cannot_be_loaded(tmp_path, make, message):
    with pytest.raises(cansimu.LibraryError, match=message):
        load_library(make(tmp_path))


@pytest.mark.parametrize("text, message", [
    (None, "cannot read the bench"),
    ("<BENCH><UCE></BENCH>", "is not an XML bench"),
])
def test_a_bench_that_cannot_be_read(tmp_path, text, message):
    if text is not None:
        (tmp_path / "bench.xml").write_text(text)
    with pytest.raises(cansimu.BenchError, match=message):
        Session(tmp_path / "bench.xml")
    assert Session.__init__ and not cansimu.session._open_session
