"""The python-can bus of a bench, driven by clients we did not write: Scapy's
ISO-TP socket over python-can with its UDS layer, and python-can itself."""

import can
import pytest
from scapy.config import conf

conf.contribs["CAN"] = {"swap-bytes": False, "remove-padding": True}
conf.contribs["ISOTP"] = {"use-can-isotp-kernel-module": False}
from scapy.contrib.automotive.uds import UDS, UDS_RDBI  # noqa: E402
from scapy.contrib.cansocket_python_can import PythonCANSocket  # noqa: E402
from scapy.contrib.isotp import ISOTPSoftSocket  # noqa: E402

from conftest import EXAMPLES  # noqa: E402


@pytest.fixture
def bench(tmp_path):
    import shutil
    shutil.copytree(EXAMPLES, tmp_path / "bench")
    return str(tmp_path / "bench" / "bench.xml")


def test_scapy_reads_the_engines_vin_and_sends_a_segmented_request(bench):
    can_socket = PythonCANSocket(interface="cansimu", channel=bench, st_min=5, block_size=2)
    try:
        with ISOTPSoftSocket(can_socket, tx_id=0x7E0, rx_id=0x7E8, basecls=UDS,
                             padding=True) as uds:
            vin = uds.sr1(UDS() / UDS_RDBI(identifiers=[0xF190]), timeout=2, verbose=False)
            assert (vin.dataIdentifier, vin.load) == (0xF190, b"VF1SIMU0000000042")
            # 23 bytes out (flow control from the bus, blocks of 2), 11 back.
            dtcs = uds.sr1(UDS(bytes.fromhex("1902FF") + bytes(20)), timeout=2,
                           verbose=False)
            assert bytes(dtcs).hex() == "5902ff0301002f01280028"
    finally:
        can_socket.close()


def frames(bus, count, timeout=0.5):
    received = []
    while len(received) < count:
        message = bus.recv(timeout)
        if message is None:
            break
        received.append(message)
    return [(m.arbitration_id, bytes(m.data).hex()) for m in received]


@pytest.mark.parametrize("padding, tail", [(0xCC, "cc" * 5), (None, "")])
def test_functional_requests_reach_every_ecu(bench, padding, tail):
    with can.Bus(interface="cansimu", channel=bench, padding=padding) as bus:
        bus.send(can.Message(arbitration_id=0x7DF, data=b"\x02\x3e\x00", is_extended_id=False))
        answer = "027e00" + tail
        assert sorted(frames(bus, 3)) == [(0x765, answer), (0x77A, answer), (0x7E8, answer)]
        # Unknown to every ECU: the negative answers a functional request
        # suppresses stay off the bus.
        bus.send(can.Message(arbitration_id=0x7DF, data=b"\x02\x27\x04", is_extended_id=False))
        assert frames(bus, 1, timeout=0.2) == []


def test_the_bus_waits_for_the_clients_flow_control(bench):
    with can.Bus(interface="cansimu", channel=bench, padding=None) as bus:
        bus.send(can.Message(arbitration_id=0x7E0, data=b"\x03\x22\xf1\x90", is_extended_id=False))
        assert frames(bus, 2, timeout=0.2) == [(0x7E8, "101462f190564631")]
        bus.send(can.Message(arbitration_id=0x7E0, data=b"\x30\x01\x00", is_extended_id=False))
        assert frames(bus, 2, timeout=0.2) == [(0x7E8, "2153494d55303030")]
        bus.send(can.Message(arbitration_id=0x7E0, data=b"\x30\x00\x00", is_extended_id=False))
        assert frames(bus, 2, timeout=0.2) == [(0x7E8, "2230303030303432")]
