"""ISO 15765-2 (ISO-TP) transport over CAN frames, normal addressing.

The two halves are separate so that each user takes what it needs: the
python-can bus answers like an ECU (it reassembles requests, sends flow
control and segments answers), and a trace importer only reassembles the
frames it reads. Neither does any I/O or timing: they turn frame bytes into
payloads and back; the caller sends, waits and sets deadlines.

Frames (first nibble of byte 0): single (0, length in the low nibble), first
(1, 12-bit length, or 0 and a 32-bit length beyond 4095 bytes), consecutive
(2, sequence number modulo 16, starting at 1), flow control (3, status:
0 continue, 1 wait, 2 overflow; then block size and STmin). The segmenter
writes classic 8-byte frames; the reassembler also reads CAN FD frames,
whose single frames above 8 bytes carry a 0 nibble and the length in byte 1,
and whose consecutive frames carry up to 63 bytes each.
"""

import enum
from dataclasses import dataclass

FRAME_SIZE = 8
MAX_PAYLOAD = 0xFFFFFFFF


class IsoTpError(ValueError):
    """A frame that is malformed or arrives out of order."""


class FrameType(enum.IntEnum):
    SINGLE = 0
    FIRST = 1
    CONSECUTIVE = 2
    FLOW_CONTROL = 3


class FlowStatus(enum.IntEnum):
    CONTINUE = 0
    WAIT = 1
    OVERFLOW = 2


def frame_type(data):
    """The FrameType of frame bytes; IsoTpError for an empty frame or an
    unknown type nibble."""
    if not data:
        raise IsoTpError("an empty frame is no ISO-TP frame")
    try:
        return FrameType(data[0] >> 4)
    except ValueError:
        raise IsoTpError(f"frame type {data[0] >> 4} is not ISO-TP") from None


def st_min_seconds(value):
    """The separation time an STmin byte asks for: 0-127 ms, F1-F9 100-900
    µs; reserved values count as the longest, 127 ms, as the standard says."""
    if value <= 0x7F:
        return value / 1000
    if 0xF1 <= value <= 0xF9:
        return (value - 0xF0) / 10000
    return 0.127


@dataclass(frozen=True)
class FlowControl:
    status: FlowStatus
    block_size: int  # consecutive frames before the next flow control; 0: all
    st_min: int  # the STmin byte as sent

    @property
    def separation(self):
        return st_min_seconds(self.st_min)

    def frame(self, padding=None):
        return _pad(bytes([0x30 | self.status, self.block_size, self.st_min]), padding)

    @classmethod
    def parse(cls, data):
        if frame_type(data) != FrameType.FLOW_CONTROL or len(data) < 3:
            raise IsoTpError(f"not a flow control frame: {bytes(data).hex()}")
        try:
            status = FlowStatus(data[0] & 0x0F)
        except ValueError:
            raise IsoTpError(f"flow status {data[0] & 0x0F} is reserved") from None
        return cls(status, data[1], data[2])


def _pad(frame, padding):
    if padding is None:
        return frame
    return frame + bytes([padding]) * (FRAME_SIZE - len(frame))


class Segmenter:
    """The frames of one payload: first() gives the single frame or the
    first frame; after each flow control, block() gives the consecutive
    frames it allows. `padding` (a byte value, or None) fills every frame to
    8 bytes."""

    def __init__(self, payload, padding=None):
        payload = bytes(payload)
        if not payload:
            raise IsoTpError("ISO-TP carries no empty payload")
        if len(payload) > MAX_PAYLOAD:
            raise IsoTpError(f"{len(payload)} bytes are more than ISO-TP carries")
        self.payload = payload
        self.padding = padding
        self._sent = 0
        self._sequence = 1

    @property
    def single(self):
        return len(self.payload) <= FRAME_SIZE - 1

    @property
    def done(self):
        return self._sent == len(self.payload)

    def first(self):
        size = len(self.payload)
        if self.single:
            self._sent = size
            return _pad(bytes([size]) + self.payload, self.padding)
        if size <= 0xFFF:
            header = bytes([0x10 | size >> 8, size & 0xFF])
        else:
            header = b"\x10\x00" + size.to_bytes(4, "big")
        self._sent = FRAME_SIZE - len(header)
        return header + self.payload[:self._sent]

    def block(self, block_size=0):
        """The next consecutive frames: `block_size` of them (0: all the
        rest)."""
        frames = []
        while not self.done and (block_size == 0 or len(frames) < block_size):
            chunk = self.payload[self._sent:self._sent + FRAME_SIZE - 1]
            frames.append(_pad(bytes([0x20 | self._sequence]) + chunk, self.padding))
            self._sent += len(chunk)
            self._sequence = (self._sequence + 1) & 0x0F
        return frames


def segment(payload, padding=None):
    """Every frame of a payload, for a receiver that asks for no pause."""
    segmenter = Segmenter(payload, padding)
    return [segmenter.first()] + segmenter.block()


class Reassembler:
    """Collects the frames of one sender (one CAN identifier) into payloads.

    feed() returns the payload a frame completes, else None. After a first
    frame, and after every `block_size` consecutive frames while more are due,
    `flow_control_due` is True until the next feed: the receiver sends its
    flow control then. A single or first frame during a reception starts
    over, as the standard has it; a consecutive frame out of sequence ends
    the reception with IsoTpError; one with no reception under way is
    ignored. Flow control frames are the other direction's and are refused."""

    def __init__(self, block_size=0):
        self.block_size = block_size
        self.flow_control_due = False
        self._reset()

    def _reset(self):
        self._expected = None
        self._buffer = bytearray()
        self._sequence = 1
        self._in_block = 0

    @property
    def receiving(self):
        return self._expected is not None

    def feed(self, data):
        data = bytes(data)
        self.flow_control_due = False
        kind = frame_type(data)
        if kind == FrameType.SINGLE:
            self._reset()
            length, header = data[0] & 0x0F, 1
            if length == 0 and len(data) > FRAME_SIZE:
                length, header = data[1], 2  # CAN FD: the length in the next byte
            if length == 0 or length > len(data) - header:
                raise IsoTpError(f"single frame of length {length} in {len(data)} bytes")
            return data[header:header + length]
        if kind == FrameType.FIRST:
            self._reset()
            return self._first(data)
        if kind == FrameType.CONSECUTIVE:
            return self._consecutive(data)
        raise IsoTpError("a flow control frame is the receiver's, not the sender's")

    def _first(self, data):
        length = (data[0] & 0x0F) << 8 | data[1] if len(data) >= 2 else 0
        header = 2
        if length == 0 and len(data) >= 6:
            length, header = int.from_bytes(data[2:6], "big"), 6
        if length < FRAME_SIZE or len(data) < FRAME_SIZE:
            raise IsoTpError(f"first frame of length {length} in {len(data)} bytes")
        self._expected = length
        self._buffer += data[header:]
        self.flow_control_due = True
        return None

    def _consecutive(self, data):
        if not self.receiving:
            return None
        sequence = data[0] & 0x0F
        if sequence != self._sequence:
            expected = self._sequence
            self._reset()
            raise IsoTpError(f"consecutive frame {sequence} where {expected} was due")
        self._sequence = (self._sequence + 1) & 0x0F
        self._buffer += data[1:1 + self._expected - len(self._buffer)]
        if len(self._buffer) >= self._expected:
            payload = bytes(self._buffer)
            self._reset()
            return payload
        self._in_block += 1
        if self.block_size and self._in_block == self.block_size:
            self._in_block = 0
            self.flow_control_due = True
        return None
