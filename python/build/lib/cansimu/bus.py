"""A python-can bus whose ECUs are a bench's.

    bus = can.Bus(interface="cansimu", channel="bench.xml")

Every ECU of the bench's association table listens on its idTx and answers
on its idRx the way an ECU on a real bus does: a request is reassembled per
ISO 15765-2 (the bus sends the flow control for a segmented one), handed to
the ECU through a one-to-one channel of the library, and each answer that
carries a frame comes back segmented, waiting for the client's flow control
and keeping its block size and separation time. A single frame on the
functional identifier (7DF) reaches every ECU; their negative answers with
the codes ISO 14229 suppresses for functional requests (11, 12, 31, 7E, 7F)
stay off the bus. Answers that carry no frame (timeouts, send failures)
leave the bus silent, as a real ECU that does not answer. Frames on other
identifiers reach no one.

Options: padding (the byte every frame of the ECUs is filled to 8 bytes
with, None for frames just as long as their content; 0xCC by default),
block_size and st_min (the flow control the ECUs send), functional_id.
"""

import collections
import threading
import time

import can

from . import isotp
from .session import Session

_SUPPRESSED_FUNCTIONAL_NRC = {0x11, 0x12, 0x31, 0x7E, 0x7F}


class _Node:
    """One ECU on the bus: its channel, the request being reassembled and
    the answers being sent."""

    def __init__(self, ecu, channel, block_size):
        self.ecu = ecu
        self.channel = channel
        self.reassembler = isotp.Reassembler(block_size)
        self.answers = collections.deque()
        self.segmenter = None  # the answer under way, waiting for flow control


class CansimuBus(can.BusABC):
    """The python-can interface "cansimu"; `channel` is the bench's path."""

    def __init__(self, channel, padding=0xCC, block_size=0, st_min=0, functional_id=0x7DF,
                 library=None, **kwargs):
        self._session = Session(channel, library=library)
        self.channel_info = f"cansimu bench {self._session.bench}"
        self.padding = padding
        self.block_size = block_size
        self.st_min = st_min
        self.functional_id = functional_id
        self._lock = threading.Lock()
        self._arrived = threading.Condition(self._lock)
        self._outgoing = collections.deque()  # (due time, can.Message), in time order
        self._nodes = {}
        try:
            for ecu in self._session.ecus:
                if ecu.addressed and ecu.id_tx not in self._nodes:
                    self._nodes[ecu.id_tx] = _Node(ecu, self._session.channel(ecu), block_size)
        except BaseException:
            self._session.close()
            raise
        super().__init__(channel=channel, **kwargs)

    @property
    def session(self):
        return self._session

    def send(self, msg, timeout=None):
        if msg.is_error_frame or msg.is_remote_frame:
            return
        data = bytes(msg.data)
        with self._lock:
            if msg.arbitration_id == self.functional_id:
                self._functional(data)
            elif msg.arbitration_id in self._nodes:
                self._physical(self._nodes[msg.arbitration_id], data)

    def _physical(self, node, data):
        try:
            if isotp.frame_type(data) == isotp.FrameType.FLOW_CONTROL:
                return self._flow_control(node, isotp.FlowControl.parse(data))
            payload = node.reassembler.feed(data)
        except isotp.IsoTpError:
            return  # a real ECU drops what it cannot read
        if node.reassembler.flow_control_due:
            self._queue(node.ecu.id_rx, isotp.FlowControl(
                isotp.FlowStatus.CONTINUE, self.block_size, self.st_min).frame(self.padding))
        if payload is not None:
            # A new request ends whatever answer was still under way.
            node.answers.clear()
            node.segmenter = None
            self._answer(node, payload, functional=False)

    def _functional(self, data):
        try:
            if isotp.frame_type(data) != isotp.FrameType.SINGLE:
                return  # functional requests are single frames only
            payload = isotp.Reassembler().feed(data)
        except isotp.IsoTpError:
            return
        for node in self._nodes.values():
            self._answer(node, payload, functional=True)

    def _answer(self, node, payload, functional):
        for answer in node.channel.ask(payload):
            frame = answer.data
            if not frame:
                continue
            if functional and len(frame) >= 3 and frame[0] == 0x7F and \
                    frame[2] in _SUPPRESSED_FUNCTIONAL_NRC:
                continue
            node.answers.append(frame)
        self._next_answer(node)

    def _next_answer(self, node):
        while node.segmenter is None and node.answers:
            segmenter = isotp.Segmenter(node.answers.popleft(), self.padding)
            self._queue(node.ecu.id_rx, segmenter.first())
            if not segmenter.done:
                node.segmenter = segmenter

    def _flow_control(self, node, control):
        if node.segmenter is None or control.status == isotp.FlowStatus.WAIT:
            return
        if control.status == isotp.FlowStatus.OVERFLOW:
            node.segmenter = None
        else:
            for frame in node.segmenter.block(control.block_size):
                self._queue(node.ecu.id_rx, frame, control.separation)
            if not node.segmenter.done:
                return
            node.segmenter = None
        self._next_answer(node)

    def _queue(self, can_id, data, separation=0.0):
        """Queues a frame of an ECU, `separation` seconds after the one
        queued before it (and never before now)."""
        last = self._outgoing[-1][0] if self._outgoing else 0.0
        due = max(time.time(), last + separation)
        message = can.Message(arbitration_id=can_id, data=data, is_extended_id=can_id > 0x7FF,
                              timestamp=due, channel=self.channel_info, is_rx=True)
        self._outgoing.append((due, message))
        self._arrived.notify_all()

    def _recv_internal(self, timeout):
        deadline = None if timeout is None else time.monotonic() + timeout
        with self._lock:
            while True:
                now = time.time()
                if self._outgoing and self._outgoing[0][0] <= now:
                    return self._outgoing.popleft()[1], False
                wait = self._outgoing[0][0] - now if self._outgoing else None
                if deadline is not None:
                    left = deadline - time.monotonic()
                    if left <= 0:
                        return None, False
                    wait = left if wait is None else min(wait, left)
                self._arrived.wait(wait)

    def shutdown(self):
        with self._lock:
            self._session.close()
        super().shutdown()
