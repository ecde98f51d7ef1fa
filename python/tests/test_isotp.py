"""ISO-TP segmentation and reassembly at the edges of the frame formats."""

import pytest

from cansimu import isotp

PAYLOAD = bytes(range(256)) * 20


@pytest.mark.parametrize("size, padding, frames, first", [
    (1, None, 1, "0100"),
    (7, 0xCC, 1, "0700010203040506"),
    (8, 0xCC, 2, "1008000102030405"),
    (62, None, 9, "103e000102030405"),
    (4095, None, 586, "1fff000102030405"),
    (4096, None, 586, "1000000010000001"),  # beyond 12 bits: the 32-bit length
])
def test_segments_reassemble_to_the_payload(size, padding, frames, first):
    segmented = isotp.segment(PAYLOAD[:size], padding)
    assert (len(segmented), segmented[0].hex()) == (frames, first)
    assert all(len(frame) == 8 for frame in segmented) or padding is None
    receiver = isotp.Reassembler()
    assert [receiver.feed(frame) for frame in segmented] == [None] * (frames - 1) + \
        [PAYLOAD[:size]]
    assert [f[0] & 0x0F for f in segmented[16:18]] == ([0, 1] if frames > 17 else [])


def test_flow_control_is_due_after_the_first_frame_and_every_block():
    receiver = isotp.Reassembler(block_size=2)
    due = []
    for frame in isotp.segment(PAYLOAD[:40]):  # first frame and 5 consecutive frames
        receiver.feed(frame)
        due.append(receiver.flow_control_due)
    assert due == [True, False, True, False, True, False]


def test_a_sender_keeps_block_size_and_a_reader_stops_out_of_sequence():
    sender = isotp.Segmenter(PAYLOAD[:40], padding=0)
    sender.first()
    assert [len(sender.block(2)), len(sender.block(2)), len(sender.block(0))] == [2, 2, 1]
    assert sender.done
    receiver = isotp.Reassembler()
    frames = isotp.segment(PAYLOAD[:40])
    receiver.feed(frames[0])
    with pytest.raises(isotp.IsoTpError, match="consecutive frame 2 where 1 was due"):
        receiver.feed(frames[2])
    assert not receiver.receiving and receiver.feed(frames[1]) is None  # ignored now


@pytest.mark.parametrize("frame, problem", [
    (b"", "empty"), (b"\x00\x11", "length 0"), (b"\x05\x01\x02", "length 5"),
    (b"\x10\x05\x01\x02\x03\x04\x05\x06", "first frame of length 5"),
    (b"\x30\x00\x00", "flow control"), (b"\x40\x00", "not ISO-TP"),
])
def test_malformed_frames_are_refused(frame, problem):
    with pytest.raises(isotp.IsoTpError, match=problem):
        isotp.Reassembler().feed(frame)


@pytest.mark.parametrize("st_min, seconds", [(0, 0), (0x7F, 0.127), (0xF1, 0.0001),
                                              (0xF9, 0.0009), (0x80, 0.127), (0xFA, 0.127)])
def test_flow_control_frames_and_separation_times(st_min, seconds):
    control = isotp.FlowControl(isotp.FlowStatus.WAIT, 4, st_min)
    assert isotp.FlowControl.parse(control.frame(0xAA)) == control
    assert control.separation == pytest.approx(seconds)
