"""A host session with the simulated box, for tests and scripts.

Session opens a bench the way the cansimu program does: CAN_DrvInit with the
bench (the session works in the bench's folder meanwhile, so that scenario
paths written relative to it resolve), the box reserved by the name it
lists, the driver and device queues read once (so that the box's configured
connection state shows from the start), port 96 reserved in mode 1 and the
host's association table loaded from the bench's UCE elements. Channels ask
the ECUs; raw frames, injections and edits of the files are one call each.
Closing releases channels, port, box and driver in that order, also after a
failure, and leaves the working directory as it was.

The library reads CANSIMU_LOG, CANSIMU_TRACE and CANSIMU_REPORT once, when
it is loaded. A session that loads it sets them first: the log to a
temporary file when none is named (each answer's source is read from it),
the trace and the report when asked for. CANSIMU_FLUSH=call is set before
the driver starts, so that each call's log lines are in the file when it
returns.
"""

import atexit
import ctypes
import dataclasses
import json
import os
import shutil
import tempfile
import threading
from dataclasses import dataclass
from pathlib import Path

from . import bench as bench_files
from .binding import (CansimuError, ChannelEvent, ChannelType, PortEvent, ResultCode, Status,
                      event_type_enum, free_list, load_library, loaded_library, read_event,
                      records, copy_record, _known)
from .sources import AnswerSource, LogFollower

PORT_NUMBER = 96
# How long the reads after a reservation wait: what they are for is queued.
_START_READ_MS = 1


class SessionClosedError(CansimuError):
    """A call on a session or channel that is closed."""


@dataclass(frozen=True)
class Answer:
    """One channel event of an exchange: its type, the result code and frame
    it carries (None for types that carry only the request), the ECU that
    answered (by its address) and the copy of the request some types carry."""

    type: "ChannelEvent | int"
    result: "ResultCode | int | None"
    data: "bytes | None"
    responder: "int | None"
    request: "bytes | None"
    # Where the answer came from, from the library's log; None when the log
    # said nothing of it (no log, or an event that is no ECU's answer).
    source: "AnswerSource | None" = None


@dataclass(frozen=True)
class Frame:
    """A raw CAN frame the port queued."""

    can_id: int
    data: bytes
    timestamp: int


def _bytes_of(value):
    if isinstance(value, str):
        return bytes.fromhex(value)
    return bytes(value)


_session_lock = threading.Lock()
_open_session = None
_output_folder = None


def _temporary_output(name):
    """A path in a folder of this process's own, removed at exit (the
    library writes its outputs for as long as the process runs)."""
    global _output_folder
    if _output_folder is None:
        _output_folder = tempfile.mkdtemp(prefix="cansimu-outputs-")
        atexit.register(shutil.rmtree, _output_folder, True)
    return Path(_output_folder) / name


def _library_with_outputs(library, wanted):
    """The library, loaded with the environment `wanted` asks for ({variable:
    path}). One that this process loaded already read its variables then:
    a wanted output it was not given cannot be had any more."""
    if hasattr(library, "unchecked"):
        loaded = library
    else:
        loaded = loaded_library(library)
    if loaded is None:
        if not os.environ.get("CANSIMU_LOG"):
            os.environ["CANSIMU_LOG"] = str(_temporary_output("cansimu.log"))
        os.environ.update({name: str(path) for name, path in wanted.items()})
        return load_library(library)
    for name, path in wanted.items():
        if loaded.outputs.get(name) != path:
            had = loaded.outputs.get(name) or "unset"
            raise CansimuError(
                f"the library {loaded.path} is already loaded in this process, with {name} "
                f"{had}; it reads {name} only when it loads, so {path} cannot be written. "
                f"Set {name} before the first session, or open this one in a new process")
    return loaded


class _ClosedOnExit:
    """A context manager that closes its object on leaving the block; a
    failure of the block takes precedence over one of close()."""

    def __enter__(self):
        return self

    def __exit__(self, kind, error, trace):
        try:
            self.close()
        except Exception:
            if error is None:
                raise


class Session(_ClosedOnExit):
    """One open bench. `bench` is the path of a bench file, or the XML text
    of one, which is written to a temporary folder together with `files`
    ({name: text}, scenarios for instance). Use it as a context manager.

    `trace` and `report` turn on the bus trace and the session report: a
    path, or True for a temporary file; they must be given to the session
    that loads the library (see the module's note), else CansimuError. The
    paths the library writes are `log_path`, `trace_path`, `report_path`
    (None when it writes none)."""

    def __init__(self, bench, files=None, library=None, mode=1, trace=None, report=None):
        wanted = {}
        for name, value, default in (("CANSIMU_TRACE", trace, "bus.log"),
                                     ("CANSIMU_REPORT", report, "report.json")):
            if value is True:
                wanted[name] = _temporary_output(default)
            elif value:
                wanted[name] = Path(value).resolve()
        self.library = _library_with_outputs(library, wanted)
        outputs = getattr(self.library, "outputs", {})
        self.log_path = outputs.get("CANSIMU_LOG")
        self.trace_path = outputs.get("CANSIMU_TRACE")
        self.report_path = outputs.get("CANSIMU_REPORT")
        self._log = LogFollower(self.log_path)
        self._temporary = None
        text = str(bench)
        if text.lstrip().startswith("<"):
            self._temporary = tempfile.TemporaryDirectory(prefix="cansimu-")
            folder = Path(self._temporary.name)
            (folder / "bench.xml").write_text(text, encoding="utf-8")
            for name, content in (files or {}).items():
                (folder / name).write_text(content, encoding="utf-8")
            bench = folder / "bench.xml"
        self.bench = Path(bench).resolve()
        self.folder = self.bench.parent
        self.ecus = bench_files.read_ecus(self.bench)
        self.device = None
        self.port = None
        self.device_name = None
        self.connected = True
        self.mode = None
        self.startup_events = []
        self.unread_port_events = []
        self._channels = []
        self._start_folder = None
        self._open = False
        self._open_session(mode)

    # -- life cycle -------------------------------------------------------

    def _open_session(self, mode):
        global _open_session
        with _session_lock:
            if _open_session is not None:
                raise CansimuError("a session is already open in this process (the library's "
                                   "state is the process's): close it first")
            _open_session = self
        lib = self.library
        self._start_folder = os.getcwd()
        try:
            os.chdir(self.folder)
            # Each answer's source is read from the log right after its call:
            # the library then writes the log as each call ends, not every
            # few milliseconds.
            os.environ.setdefault("CANSIMU_FLUSH", "call")
            lib.CAN_DrvInit(str(self.bench).encode())
            self._open = True
            self.device_name = self._list_device()
            handle = ctypes.c_void_p()
            lib.CAN_DevReservation(self.device_name.encode(), ctypes.byref(handle))
            self.device = handle
            self.startup_events = self.driver_events(_START_READ_MS) + \
                self.device_events(_START_READ_MS)
            port = ctypes.c_void_p()
            lib.CAN_PrtReservation(self.device, PORT_NUMBER, ctypes.byref(port))
            self.port = port
            self.set_mode(mode)
            if mode == 1:
                self._load_assoc_table()
        except BaseException:
            self.close()
            raise

    def _list_device(self):
        devices = records.CAN_EnumList(0, None)
        self.library.CAN_DevEnumerate(ctypes.byref(devices))
        try:
            if devices.count == 0 or not devices.records:
                raise CansimuError("CAN_DevEnumerate listed no device")
            first = ctypes.cast(devices.records, ctypes.POINTER(records.CAN_EnumDev)).contents
            return first.name.decode("latin-1")
        finally:
            free_list(devices)

    def _load_assoc_table(self):
        entries = [ecu for ecu in self.ecus if ecu.addressed]
        # An empty table still passes a valid pointer: the library judges it.
        table = (records.CAN_AssocEntry * max(1, len(entries)))()
        for entry, ecu in zip(table, entries):
            entry.ecuAddress, entry.idTx, entry.idRx = ecu.address, ecu.id_tx, ecu.id_rx
        result = records.AssocResult()
        self.library.CAN_PrtLoadAssocTable(
            self.port, ctypes.byref(records.CAN_AssocTable(len(entries), table)),
            ctypes.byref(result))

    def close(self):
        """Releases everything the session holds, innermost first: channels
        (their sessions closed, their events read away), the port, the box,
        the driver; then the working directory and temporary files. Safe to
        call twice; the first error met is raised once all is released."""
        global _open_session
        if self._start_folder is None:
            return
        errors = []

        def attempt(step, *arguments):
            try:
                step(*arguments)
            except Exception as error:  # every step runs, whatever failed before
                errors.append(error)

        for channel in reversed(self._channels):
            attempt(channel.close)
        lib = self.library
        if self.port:
            attempt(lib.CAN_PrtFree, self.port)
        if self.device:
            attempt(lib.CAN_DevFree, self.device)
        if self._open:
            lib.CAN_DrvEnd()
        self.port = self.device = None
        self._open = False
        os.chdir(self._start_folder)
        self._start_folder = None
        if self._temporary is not None:
            self._temporary.cleanup()
        with _session_lock:
            if _open_session is self:
                _open_session = None
        if errors:
            raise errors[0]


    def report(self):
        """The session report as the library last wrote it, parsed (after
        close, the one CAN_DrvEnd wrote); None before its first write.
        The counts are the library's since it was loaded."""
        if self.report_path is None:
            raise CansimuError("the library writes no session report: open the session "
                               "that loads it with report=..., or set CANSIMU_REPORT")
        try:
            with open(self.report_path, encoding="utf-8") as file:
                return json.load(file)
        except FileNotFoundError:
            return None

    @property
    def is_open(self):
        return self._open

    def _check_open(self):
        if not self._open:
            raise SessionClosedError(f"the session on {self.bench} is closed")

    # -- the box ----------------------------------------------------------

    def set_mode(self, mode):
        """CAN_DevSetMode: 0 download, 1 CAN parameters and channels, 2 raw
        frames, 3 measures."""
        self._check_open()
        detail = ctypes.c_uint8(0)
        self.library.CAN_DevSetMode(self.device, mode, ctypes.byref(detail))
        self.mode = mode

    def version(self):
        return self._get("CAN_DevGetVersion", records.CAN_VersionDev, self.device)

    def voltages(self):
        return self._get("CAN_DevGetTension", records.CAN_TensionDev, self.device)

    def measures(self):
        """CAN_PrtGetMesPhys (switches to mode 3 first)."""
        if self.mode != 3:
            self.set_mode(3)
        return self._get("CAN_PrtGetMesPhys", records.CAN_MesPhysPort, self.port)

    def _get(self, export, record_type, handle):
        self._check_open()
        record = record_type()
        getattr(self.library, export)(handle, ctypes.byref(record))
        return copy_record(record)

    def _events(self, level, handle, timeout_ms):
        self._check_open()
        events = []
        while True:
            event = read_event(self.library, level, handle, timeout_ms)
            if event is None:
                return events
            events.append(event)
            if level == "device" and event.type in (101, 102):
                self.connected = event.type == 102
            if event.pending == 0:
                return events

    def driver_events(self, timeout_ms=1):
        """Reads the driver queue until it is empty (CAN_DrvRxMsg: this is
        also where the library reads a saved bench again)."""
        return self._events("driver", None, timeout_ms)

    def device_events(self, timeout_ms=1):
        return self._events("device", self.device, timeout_ms)

    def port_events(self, timeout_ms=1):
        return self._events("port", self.port, timeout_ms)

    # -- injections and edits ----------------------------------------------

    def inject(self, export, status, detail=0):
        """setNextCANStatus: arms `status` (a Status, name or number) for the
        next call of `export`, or, for CAN_DrvRxMsg, CAN_DevRxMsg and
        CAN_PrtRxMsg, queues an event of that type (an event type, name or
        number)."""
        self._check_open()
        self.library.setNextCANStatus(export.encode(), _injected_value(export, status),
                                      _injected_value(None, detail))

    def inject_in_bench(self, export, status, detail=0):
        """Adds <INJECT export status detail/> to the bench as the last child
        of its root and saves it; the library applies it when it reads the
        bench again, at the next CAN_DrvRxMsg (driver_events). Returns the
        element's line."""
        self._check_open()
        return bench_files.append_element(
            self.bench, bench_files.inject_element(export, status, detail))

    def edit(self, path, text):
        """Saves `text` to `path` (relative to the bench's folder) with a
        modification time that has moved on, so that the library reads it
        again: a scenario at its ECU's next request, the bench at the next
        CAN_DrvRxMsg."""
        self._check_open()
        bench_files.save(self.folder / path, text)

    def scenario(self, ecu):
        """The path of an ECU's scenario file."""
        return self.folder / self.ecu(ecu).scenario.replace("\\", "/")

    # -- channels and frames ------------------------------------------------

    def ecu(self, name):
        """The ECU `name` designates: its address, its idTx, or its scenario's
        name; an Ecu is returned as it is."""
        if isinstance(name, bench_files.Ecu):
            return name
        found = bench_files.find_ecu(self.ecus, name)
        if found is None:
            listed = ", ".join(str(ecu) for ecu in self.ecus if ecu.usable) or "none"
            raise CansimuError(f"no ECU '{name}' in {self.bench} (ECUs: {listed})")
        return found

    def channel(self, ecu):
        """A one-to-one channel to an ECU of the association table, its
        session open."""
        found = self.ecu(ecu)
        if not found.addressed:
            raise CansimuError(f"ECU {found} has no one-byte targetAddress, so it is not in "
                               "the host's association table: no channel reaches it")
        return Channel(self, found)

    def broadcast(self, start=b""):
        """A broadcast channel to every free ECU, its session open (which
        sends `start`, when given, as a request); the port must have no
        other channel."""
        return Channel(self, None, _bytes_of(start))

    def ask(self, ecu, request, timeout_ms=100):
        """The answers of one ECU to one request, through a channel opened
        and freed for it."""
        with self.channel(ecu) as channel:
            return channel.ask(request, timeout_ms)

    def send_frame(self, can_id, data, timeout_ms=100):
        """Puts a raw frame (at most 8 bytes) on the bus with CAN_PrtSendTrame
        (switching to mode 2 first) and returns the frames the ECUs answered;
        other port events read meanwhile stay in `unread_port_events`."""
        self._check_open()
        if self.mode != 2:
            self.set_mode(2)
        payload = _bytes_of(data)
        if len(payload) > 8:
            raise ValueError(f"a CAN frame carries 8 bytes at most, not {len(payload)}")
        frame = records.CAN_FramePort(canId=can_id, length=len(payload))
        frame.bytes[:len(payload)] = payload
        detail = ctypes.c_uint8(0)
        self.library.CAN_PrtSendTrame(self.port, ctypes.byref(frame), ctypes.byref(detail))
        frames = []
        for event in self.port_events(timeout_ms):
            if event.type == PortEvent.PRT_TYPE_FRAME:
                frames.append(Frame(event.data.canId, event.data.bytes[:event.data.length],
                                    event.data.timestamp))
            else:
                self.unread_port_events.append(event)
        return frames

    def __repr__(self):
        state = "open" if self._open else "closed"
        return f"<cansimu.Session {self.bench} ({state})>"


def _injected_value(export, value):
    if isinstance(value, str):
        kinds = [event_type_enum(export), Status] if export else [Status]
        for kind in kinds:
            if kind is not None and value in kind.__members__:
                return int(kind[value])
        try:
            return int(value, 0)
        except ValueError:
            raise CansimuError(f"'{value}' is neither a number nor a name of "
                               f"{' or '.join(k.__name__ for k in kinds if k)}") from None
    return int(value)


class Channel(_ClosedOnExit):
    """A diagnostic channel with its session open. ask() sends a request and
    returns every event the ECUs queued for it."""

    def __init__(self, session, ecu, start=b""):
        session._check_open()
        self.session = session
        self.ecu = ecu
        self.broadcast = ecu is None
        lib = session.library
        handle = ctypes.c_void_p()
        kind = ChannelType.CHN_BROADCAST if self.broadcast else ChannelType.CHN_ONE_TO_ONE
        lib.CAN_ChnCreate(session.port, kind, 0, ctypes.byref(handle))
        self.handle = handle
        self._session_open = False
        session._channels.append(self)
        try:
            # The start frame's bytes need a valid pointer even when empty.
            frame = (ctypes.c_uint8 * (len(start) + 1)).from_buffer_copy(start + b"\0")
            config = records.CAN_ChnConfigRec(
                ecuAddress=0 if ecu is None else ecu.address, startFrameLength=len(start),
                startFrame=ctypes.cast(frame, ctypes.POINTER(ctypes.c_uint8)))
            lib.CAN_ChnConfig(handle, ctypes.byref(config))
            session._log.skip()
            lib.CAN_ChnOpenSession(handle)
            self._session_open = True
        except BaseException:
            self.close()
            raise

    def ask(self, request, timeout_ms=100):
        """CAN_ChnSendDiag with `request` (bytes, or hex text), then the
        events it queued: up to the one that leaves the queue empty (on a
        broadcast channel, up to CHN_TYPE_END_OF_RCV, which is left out).
        An empty list: no ECU answered."""
        if not self._session_open:
            raise SessionClosedError("the channel's session is closed")
        self.session._check_open()
        payload = _bytes_of(request)
        data = (ctypes.c_uint8 * (len(payload) + 1)).from_buffer_copy(payload + b"\0")
        message = records.CAN_DiagMsg(0, len(payload),
                                      ctypes.cast(data, ctypes.POINTER(ctypes.c_uint8)))
        log = self.session._log
        log.skip()
        self.session.library.CAN_ChnSendDiag(self.handle, ctypes.byref(message))
        return self.read(timeout_ms)

    def _with_sources(self, answers, sources):
        """Each answer that carries an ECU's frame gets the source the log
        gave for that ECU (one line per ECU and request); the others, and
        all when the log named no such ECU, get None."""
        by_address = {}
        for source in sources:
            for ecu in self.session.ecus:
                if ecu.id_rx == source.id_rx and ecu.address is not None:
                    by_address.setdefault(ecu.address, source)
        return [dataclasses.replace(answer, source=by_address.get(answer.responder))
                if answer.responder is not None else answer for answer in answers]

    def read(self, timeout_ms=100):
        """The events queued on the channel, as Answers, each with the source
        the log gave since the request (or the session's opening)."""
        answers = []
        while True:
            event = read_event(self.session.library, "channel", self.handle, timeout_ms)
            if event is None:
                break
            if event.type == ChannelEvent.CHN_TYPE_END_OF_RCV:
                break
            answers.append(_answer(event))
            if event.pending == 0 and not self.broadcast:
                break
        # The library logs each ECU's source before the call that asked returns.
        return self._with_sources(answers, self.session._log.new_sources())

    def close(self):
        """Closes the channel's session, reads away what it still queued and
        frees it."""
        lib = self.session.library
        if self.handle is None:
            return
        try:
            if self._session_open:
                lib.CAN_ChnCloseSession(self.handle)
                self._session_open = False
            while read_event(lib, "channel", self.handle, 1) is not None:
                pass
            lib.CAN_ChnFree(self.handle)
        finally:
            self.handle = None
            if self in self.session._channels:
                self.session._channels.remove(self)



def _answer(event):
    result = event.data
    return Answer(
        type=event.type,
        result=None if result is None else _known(ResultCode, result.resultCode),
        data=None if result is None else result.frame,
        responder=None if result is None else result.responderAddress,
        request=event.request)


__all__ = ["Session", "Channel", "Answer", "AnswerSource", "Frame", "SessionClosedError",
           "PORT_NUMBER"]
