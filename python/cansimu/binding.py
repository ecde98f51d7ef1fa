"""The library's C interface, declared once for ctypes.

Loads the library, declares every export with its exact argument and result
types, and mirrors every record of cansimu.h as a ctypes.Structure. The
records are built from one table (RECORDS) so that the same table gives the
layout for a 32-bit or a 64-bit host (record_layouts), which the tests check
against the C compiler. Event records from the ...RxMsg exports are copied
into Python objects and released at once (read_event): no pointer of the
library's reaches the user.
"""

import ctypes
import enum
import os
import struct
import threading
from pathlib import Path
from types import SimpleNamespace


class CansimuError(Exception):
    """Base of every error the package raises."""


class LibraryError(CansimuError):
    """The library cannot be found or loaded, or lacks an export."""


class StatusError(CansimuError):
    """An export answered a status other than E_SUCCESS."""

    def __init__(self, export, status):
        self.export = export
        self.status = status_enum(status)
        super().__init__(f"{export} answered {status_text(status)}")


class Status(enum.IntEnum):
    E_SUCCESS = 0
    E_BOARD_ERROR_1 = 1
    E_BOARD_ERROR_2 = 2
    E_NO_EVENT = 3
    E_INVALID = 4
    E_ALREADY_RESERVED = 6
    E_DISCONNECTED = 7
    E_NOMEM = 9
    E_NOT_FOUND = 13
    E_BAD_FILE = 15
    E_RECONF_PROGRESS = 18
    E_DENIED_KERNEL_ACCESS = 19
    E_NULL_POINTER = 21
    E_KERNEL_RW_ERROR = 22
    E_CHANNEL_REFUSED = 26
    E_BUSOFF = 27


class DriverEvent(enum.IntEnum):
    DRV_TYPE_ENDFIFO = 0
    DRV_TYPE_DEVICE_100 = 100
    DRV_TYPE_DEVICE_101 = 101


class DeviceEvent(enum.IntEnum):
    DEV_TYPE_ENDFIFO = 0
    DEV_TYPE_DISCONNECTED = 101
    DEV_TYPE_CONNECTED = 102
    DEV_TYPE_STATUS_PAIR = 200
    DEV_TYPE_CONFIG = 201
    DEV_TYPE_TENSION = 202
    DEV_TYPE_STATUS = 203
    DEV_TYPE_MODE = 204
    DEV_TYPE_RESET = 205
    DEV_TYPE_PROGRESS = 1000


class PortEvent(enum.IntEnum):
    PRT_TYPE_ENDFIFO = 0
    PRT_TYPE_CAN_PARAM = 311
    PRT_TYPE_STATE = 313
    PRT_TYPE_MES_PHYS = 320
    PRT_TYPE_FRAME = 323


class ChannelEvent(enum.IntEnum):
    CHN_TYPE_ENDFIFO = 0
    CHN_TYPE_CRSNDDIAGFRAME = 400
    CHN_TYPE_SEND_FAILED_LOSSOFCOM = 2000
    CHN_TYPE_SEND_FAILED_CRNEG = 2001
    CHN_TYPE_SEND_FAILED_TIMEOUT = 2002
    CHN_TYPE_SEND_FAILED_INTERNAL_DRIVER_ERROR = 2003
    CHN_TYPE_RCV_CORRUPTED_FRAME = 2004
    CHN_TYPE_RCV_STARTOK_NOTCOMPLIANT = 2005
    CHN_TYPE_REQ_1_0_EMITTED = 2006
    CHN_TYPE_RCV_FAILED_TIMEOUT = 2007
    CHN_TYPE_RCV_SUCCESS = 2008
    CHN_TYPE_RCV_SUCCESS_BUT_UNEXPECTED = 2009
    CHN_TYPE_RCV_FAILED_NO_RESPONSE = 2010
    CHN_TYPE_END_OF_RCV = 2011


class ChannelType(enum.IntEnum):
    CHN_ONE_TO_ONE = 0
    CHN_BROADCAST = 1


class ResultCode(enum.IntEnum):
    """The result codes a scenario's typed answer names (CAN_ChnResult)."""

    cOk = 0
    cNok = 1
    cTimeOut = 2
    cErreurParametre = 3
    cCodeCommandeInvalide = 4
    cCommandeNonImplementee = 5
    cLongueurDonneesInvalide = 6
    cParametreInvalide = 7
    cErreurEcriture = 8
    cErreurLecture = 9
    cIdCanInvalide = 10
    cOctetFiInvalide = 11
    cBusOff = 12
    cErreurPassiveBus = 13
    cModeIncompatible = 14
    cBrpInvalide = 20
    cTseg1Invalide = 21
    cTseg2Invalide = 22
    cSamInvalide = 23
    cSjwInvalide = 24
    cMTypeInvalide = 30
    cTaTypeInvalide = 31
    cAbonneInconnu = 32
    cErreurUsb = 64
    cTimeOutOctet = 65
    cTimeOutTrame = 66
    cErreurCypress = 67
    cLongueursIncoherentes = 68
    cLongueurTrameFausse = 69
    cLongueurTrameInvalide = 70
    cTypeTrameInvalide = 71


CAN_BROADCAST_ID = 0x7D0


def _known(enum_class, value):
    try:
        return enum_class(value)
    except ValueError:
        return value


def status_enum(value):
    """The Status of a number, or the number itself when it names none (an
    armed injection may answer any value)."""
    return _known(Status, value)


def status_text(value):
    status = status_enum(value)
    return f"{status.name} ({int(status)})" if isinstance(status, Status) else f"status {value}"


# ---------------------------------------------------------------------------
# Records. Field kinds: "u8", "u16", "u32", "f32", ("char", n), ("u8", n),
# ("ptr", target record or None for void), ("rec", name, count).

PTR = "ptr"
RECORDS = {
    "CAN_EventDrv": [("type", "u32"), ("detail", "u32"), ("reserved1", "u32"),
                     ("reserved2", "u32"), ("data", (PTR, None)), ("reserved3", "u32")],
    "CAN_EventDev": [("type", "u32"), ("reserved1", "u32"), ("reserved2", "u32"),
                     ("reserved3", "u32"), ("data", (PTR, None)), ("reserved4", "u32")],
    "CAN_EnumDev": [("name", ("char", 128)), ("unused", ("u8", 136)), ("fixedOne", "u32"),
                    ("reserved", "u8"), ("padding", ("u8", 3)), ("disconnected", "u32")],
    "CAN_EnumList": [("count", "u32"), ("records", (PTR, None))],
    "CAN_EnumPort": [("resultByte", "u8"), ("portNumber", "u8"), ("reserved", "u8")],
    "CAN_VersionDev": [("resultByte", "u8"), ("bootVersion", ("char", 11)),
                       ("bootDate", ("char", 11)), ("bootCheckSum", ("char", 11)),
                       ("appVersion", ("char", 11)), ("appDate", ("char", 11)),
                       ("appCheckSum", ("char", 11))],
    "CAN_ConfigDev": [("resultByte", "u8"), ("bootVersion", ("char", 11)),
                      ("bootDate", ("char", 11)), ("bootCheckSum", ("char", 11)),
                      ("appVersion", ("char", 11)), ("appDate", ("char", 11)),
                      ("appCheckSum", ("char", 11)), ("padding", "u8"), ("count", "u32"),
                      ("ports", (PTR, "CAN_EnumPort"))],
    "CAN_TensionDev": [("resultByte", "u8"), ("padding", ("u8", 3)), ("batteryVoltage", "f32"),
                       ("apcKelmora", "f32"), ("apcDravik", "f32")],
    "CAN_ModeDev": [("resultByte", "u8"), ("padding", ("u8", 3)), ("mode", "u32")],
    "CAN_TestDev": [("resultByte", "u8"), ("padding", ("u8", 3)), ("firstValue", "f32"),
                    ("secondValue", "f32")],
    "DownloadResult": [("errorCode", "u8"), ("written", "u8")],
    "CAN_EventPort": [("type", "u32"), ("reserved1", "u32"), ("reserved2", "u32"),
                      ("reserved3", "u32"), ("data", (PTR, None)), ("reserved4", "u32")],
    "CAN_MesPhysPort": [("resultByte", "u8"), ("unused", ("u8", 3)), ("batteryVoltage", "f32"),
                        ("canHmin", "f32"), ("canHmax", "f32"), ("canLmin", "f32"),
                        ("canLmax", "f32")],
    "CAN_ParamPort": [("resultByte", "u8"), ("unused1", ("u8", 3)), ("param1", "u8"),
                      ("param2", "u8"), ("param3", "u8"), ("unused2", "u8"), ("param4", "u32"),
                      ("param5", "u8"), ("unused3", ("u8", 3)), ("param6", "u32")],
    "CAN_StatePort": [("resultByte", "u8"), ("unused", ("u8", 3)), ("word4", "u32"),
                      ("word8", "u32"), ("word12", "u32"), ("bytes16", ("u8", 4))],
    "CAN_BaudSetting": [("bytes", ("u8", 12))],
    "CAN_BaudSearchPort": [("unused1", ("u8", 4)), ("candidateCount", "u8"),
                           ("unused2", ("u8", 3)), ("candidates", ("rec", "CAN_BaudSetting", 1))],
    "CAN_BaudFoundPort": [("resultByte", "u8"), ("unused", ("u8", 3)),
                          ("found", ("rec", "CAN_BaudSetting", None))],
    "CAN_AssocEntry": [("header", ("u8", 5)), ("ecuAddress", "u8"), ("unused", ("u8", 10)),
                       ("idTx", "u32"), ("idRx", "u32"), ("trailer", "u32")],
    "CAN_AssocTable": [("count", "u32"), ("entries", (PTR, "CAN_AssocEntry"))],
    "AssocResult": [("errorCode", "u8"), ("zero", "u8")],
    "CAN_FramePort": [("canId", "u32"), ("reserved1", "u32"), ("reserved2", "u32"),
                      ("length", "u32"), ("bytes", ("u8", 8)), ("timestamp", "u32")],
    "CAN_EventChn": [("type", "u32"), ("reserved1", "u32"), ("reserved2", "u32"),
                     ("reserved3", "u32"), ("data", (PTR, None)), ("request", (PTR, None))],
    "CAN_ChnResult": [("resultCode", "u8"), ("unused1", ("u8", 3)), ("echoWord", "u32"),
                      ("echoByte2", "u8"), ("responderAddress", "u8"), ("unused2", ("u8", 2)),
                      ("channelType", "u32"), ("echoByte1", "u8"), ("unused3", ("u8", 3)),
                      ("timestamp", "u32"), ("frameLength", "u16"), ("unused4", ("u8", 2)),
                      ("frameData", (PTR, "u8"))],
    "CAN_DiagMsg": [("header", "u32"), ("length", "u32"), ("data", (PTR, "u8"))],
    # unused2 is 72 - 16 - sizeof(pointer) bytes: see _field_type.
    "CAN_ChnConfigRec": [("ecuAddress", "u8"), ("echoByte1", "u8"), ("echoByte2", "u8"),
                         ("unused1", ("u8", 9)), ("startFrameLength", "u32"),
                         ("startFrame", (PTR, "u8")), ("unused2", ("u8", "72-16-ptr")),
                         ("echoWord", "u32")],
    "CAN_ChnInfo": [("echoWord", "u32"), ("echoByte2", "u8"), ("ecuAddress", "u8"),
                    ("unused1", ("u8", 2)), ("channelType", "u32"), ("echoByte1", "u8"),
                    ("unused2", ("u8", 3)), ("sessionOpen", "u32")],
}

_SCALARS = {"u8": ctypes.c_uint8, "u16": ctypes.c_uint16, "u32": ctypes.c_uint32,
            "f32": ctypes.c_float}
NATIVE_POINTER_SIZE = ctypes.sizeof(ctypes.c_void_p)


def _field_type(kind, built, pointer_size):
    if isinstance(kind, str):
        return _SCALARS[kind]
    if kind[0] == PTR:
        if pointer_size != NATIVE_POINTER_SIZE:
            # Another host's pointer: only its size and alignment matter.
            return ctypes.c_uint32 if pointer_size == 4 else ctypes.c_uint64
        target = kind[1]
        if target is None:
            return ctypes.c_void_p
        return ctypes.POINTER(_SCALARS[target] if target in _SCALARS else built[target])
    if kind[0] == "rec":
        record = built[kind[1]]
        return record if kind[2] is None else record * kind[2]
    count = 72 - 16 - pointer_size if kind[1] == "72-16-ptr" else kind[1]
    return (ctypes.c_char if kind[0] == "char" else ctypes.c_uint8) * count


def build_records(pointer_size=NATIVE_POINTER_SIZE):
    """The ctypes.Structure of every record for a host with pointers of
    `pointer_size` bytes (natural alignment, as the header lays them out)."""
    built = {}
    for name, fields in RECORDS.items():
        built[name] = type(name, (ctypes.Structure,), {
            "_fields_": [(field, _field_type(kind, built, pointer_size))
                         for field, kind in fields]})
    return built


def record_layouts(pointer_size):
    """{record: (size, {field: offset})} for a host of that pointer size."""
    return {name: (ctypes.sizeof(record),
                   {field: getattr(record, field).offset for field, _ in record._fields_})
            for name, record in build_records(pointer_size).items()}


records = SimpleNamespace(**build_records())

# ---------------------------------------------------------------------------
# Exports: name -> (result type, argument types). None as result: void.

_u32, _u8p, _vp, _cp = ctypes.c_uint32, ctypes.POINTER(ctypes.c_uint8), ctypes.c_void_p, \
    ctypes.c_char_p
_P = ctypes.POINTER
_r = records
_LOG_SETTERS = ["setLogCriticalMethod", "setLogErrorMethod", "setLogFrameCriticalMethod",
                "setLogFrameErrorMethod", "setLogFrameInformationMethod",
                "setLogFrameWarningMethod", "setLogInformationMethod", "setLogWarningMethod"]

EXPORTS = {
    "CAN_DrvInit": (_u32, [_cp]),
    "CAN_DrvEnd": (None, []),
    "CAN_DrvRxMsg": (_u32, [_P(_P(_r.CAN_EventDrv)), _P(_u32), _u32]),
    "CAN_DrvFreeRxMsg": (_u32, [_P(_r.CAN_EventDrv)]),
    "CAN_DrvEndFifo": (_u32, []),
    "CAN_DevEnumerate": (_u32, [_P(_r.CAN_EnumList)]),
    "CAN_DevRxMsg": (_u32, [_vp, _P(_P(_r.CAN_EventDev)), _P(_u32), _u32]),
    "CAN_DevFreeRxMsg": (_u32, [_P(_r.CAN_EventDev)]),
    "CAN_DevEndFifo": (_u32, [_vp]),
    "CAN_DevReservation": (_u32, [_cp, _P(_vp)]),
    "CAN_DevFree": (_u32, [_vp]),
    "CAN_DevSetMode": (_u32, [_vp, _u32, _u8p]),
    "CAN_DevGetMode": (_u32, [_vp, _P(_r.CAN_ModeDev)]),
    "CAN_DevGetConfig": (_u32, [_vp, _P(_r.CAN_ConfigDev)]),
    "CAN_DevGetTension": (_u32, [_vp, _P(_r.CAN_TensionDev)]),
    "CAN_DevGetVersion": (_u32, [_vp, _P(_r.CAN_VersionDev)]),
    "CAN_DevSetSleep": (_u32, [_vp]),
    "CAN_DevRunTest": (_u32, [_vp, _u32, _P(_r.CAN_TestDev)]),
    "CAN_DevSndGenericFrame": (_u32, [_vp, _vp]),
    "CAN_DevAutoConfig": (_u32, [_vp]),
    "CAN_DevAutoConfigRaz": (_u32, [_vp]),
    "CAN_DevHC16Reset": (_u32, [_vp]),
    "CAN_DevBoardTeleFirm": (_u32, [_vp, _cp, _P(_r.DownloadResult)]),
    "CAN_PrtEnumerate": (_u32, [_vp, _P(_r.CAN_EnumList)]),
    "CAN_PrtReservation": (_u32, [_vp, _u32, _P(_vp)]),
    "CAN_PrtFree": (_u32, [_vp]),
    "CAN_PrtGetMesPhys": (_u32, [_vp, _P(_r.CAN_MesPhysPort)]),
    "CAN_PrtSetCanParam": (_u32, [_vp, _P(_r.CAN_ParamPort)]),
    "CAN_PrtGetCanParam": (_u32, [_vp, _P(_r.CAN_ParamPort)]),
    "CAN_PrtDetBaudRate": (_u32, [_vp, _P(_r.CAN_BaudSearchPort), _P(_r.CAN_BaudFoundPort)]),
    "CAN_PrtLoadAssocTable": (_u32, [_vp, _P(_r.CAN_AssocTable), _P(_r.AssocResult)]),
    "CAN_PrtSetVoie": (_u32, [_vp, _u32, _u8p]),
    "CAN_PrtSetHardFilt": (_u32, [_vp, _vp, _u8p]),
    "CAN_PrtSetSoftFilt": (_u32, [_vp, _vp, _u8p]),
    "CAN_PrtSetParamFlux": (_u32, [_vp, _vp, _u32]),
    "CAN_PrtRegulationOn": (_u32, [_vp, _u32, _vp]),
    "CAN_PrtRegulationOff": (_u32, [_vp, _vp]),
    "CAN_PrtPortGetState": (_u32, [_vp, _P(_r.CAN_StatePort)]),
    "CAN_PrtSetSndCycl": (_u32, [_vp, _vp, _u32, _u8p]),
    "CAN_PrtActSndCycl": (_u32, [_vp, _u32, _u8p]),
    "CAN_PrtUpdSndCycl": (_u32, [_vp, _vp, _u8p]),
    "CAN_PrtDActSndCycl": (_u32, [_vp, _u32, _u8p]),
    "CAN_PrtDelSndCycl": (_u32, [_vp, _u32, _u8p]),
    "CAN_PrtCtrlReinit": (_u32, [_vp, _vp]),
    "CAN_PrtSendTrame": (_u32, [_vp, _P(_r.CAN_FramePort), _u8p]),
    "CAN_PrtRxMsg": (_u32, [_vp, _P(_P(_r.CAN_EventPort)), _P(_u32), _u32]),
    "CAN_PrtEndFifo": (_u32, [_vp]),
    "CAN_PrtFreeRxMsg": (_u32, [_P(_r.CAN_EventPort)]),
    "CAN_ChnEnumerate": (_u32, [_vp, _P(_r.CAN_EnumList)]),
    "CAN_ChnCreate": (_u32, [_vp, _u32, _u32, _P(_vp)]),
    "CAN_ChnFree": (_u32, [_vp]),
    "CAN_ChnConfig": (_u32, [_vp, _P(_r.CAN_ChnConfigRec)]),
    "CAN_ChnOpenSession": (_u32, [_vp]),
    "CAN_ChnCloseSession": (_u32, [_vp]),
    "CAN_ChnSendDiag": (_u32, [_vp, _P(_r.CAN_DiagMsg)]),
    "CAN_ChnRxMsg": (_u32, [_vp, _P(_P(_r.CAN_EventChn)), _P(_u32), _u32]),
    "CAN_ChnFreeRxMsg": (_u32, [_P(_r.CAN_EventChn)]),
    "CAN_ChnEndFifo": (_u32, [_vp]),
    "setNextCANStatus": (None, [_cp, _u32, _u32]),
    **{name: (None, [_vp]) for name in _LOG_SETTERS},
}

# ---------------------------------------------------------------------------
# Loading.

LIBRARY_NAME = "cansimu.dll" if os.name == "nt" else "libcansimu.so.0"
PACKAGE_FOLDER = Path(__file__).resolve().parent


def library_candidates():
    """Where the library is looked for, in order, with why: the path (a file
    or its folder) in CANSIMU_LIBRARY, next to the package (its folder, then
    the folder that holds it), then the bare name for the system's search."""
    found = []
    named = os.environ.get("CANSIMU_LIBRARY", "")
    if named:
        path = Path(named)
        found.append((path / LIBRARY_NAME if path.is_dir() else path, "CANSIMU_LIBRARY"))
    for folder in (PACKAGE_FOLDER, PACKAGE_FOLDER.parent):
        if (folder / LIBRARY_NAME).is_file():
            found.append((folder / LIBRARY_NAME, "next to the package"))
    found.append((Path(LIBRARY_NAME), "by name, through the system's search"))
    return found


def _binary_bits(path):
    """32 or 64 for an ELF or PE file, None for anything else or unreadable."""
    try:
        with open(path, "rb") as file:
            head = file.read(64)
            if head[:4] == b"\x7fELF":
                return {1: 32, 2: 64}.get(head[4])
            if head[:2] == b"MZ" and len(head) >= 64:
                file.seek(struct.unpack_from("<I", head, 60)[0])
                pe = file.read(6)
                if pe[:4] == b"PE\0\0":
                    return {0x14C: 32, 0x8664: 64}.get(struct.unpack_from("<H", pe, 4)[0])
    except OSError:
        return None
    return None


def _check_loadable(path):
    """Raises LibraryError with a plain reason before ctypes would give a
    cryptic one (or, for a foreign format, crash on a non-library)."""
    if not path.is_file():
        raise LibraryError(f"no library at {path}")
    bits = _binary_bits(path)
    ours = NATIVE_POINTER_SIZE * 8
    if bits is None:
        raise LibraryError(f"{path} is not a shared library this system can load")
    if bits != ours:
        raise LibraryError(f"{path} is a {bits}-bit library and this Python is {ours}-bit: "
                           f"use the {ours}-bit build of cansimu")
    expected = b"MZ" if os.name == "nt" else b"\x7fELF"
    with open(path, "rb") as file:
        if file.read(len(expected)) != expected:
            raise LibraryError(f"{path} is a library for another system")


class Library:
    """One loaded copy of the library. Each export is an attribute that
    raises StatusError for a status other than E_SUCCESS (void exports
    return None); `unchecked.NAME` returns the status instead."""

    def __init__(self, path, why=""):
        self.path = Path(path)
        self.why = why
        # What the library reads from the environment when it loads, as it
        # was then: the files it writes for the whole process.
        self.outputs = {name: Path(os.environ[name]).absolute() if os.environ.get(name) else None
                        for name in OUTPUT_VARIABLES}
        try:
            self._dll = ctypes.CDLL(str(path))
        except OSError as error:
            raise LibraryError(f"cannot load the library {path}: {error}") from None
        self.unchecked = SimpleNamespace()
        missing = []
        for name, (result, arguments) in EXPORTS.items():
            try:
                raw = getattr(self._dll, name)
                checked = ctypes.CFUNCTYPE(result, *arguments)((name, self._dll))
            except AttributeError:
                missing.append(name)
                continue
            raw.restype, raw.argtypes = result, arguments
            if result is not None:
                checked.errcheck = _raise_for_status(name)
            setattr(self.unchecked, name, raw)
            setattr(self, name, checked)
        if missing:
            raise LibraryError(f"{path} does not export {', '.join(missing)}")

    def __repr__(self):
        return f"<cansimu.Library {self.path} ({self.why})>"


def _raise_for_status(name):
    def check(status, _function, _arguments):
        if status != Status.E_SUCCESS:
            raise StatusError(name, status)
        return status
    return check


_loaded = {}
_loading = threading.Lock()

# The environment variables the library reads once, when it is loaded.
OUTPUT_VARIABLES = ("CANSIMU_LOG", "CANSIMU_TRACE", "CANSIMU_REPORT")


def _chosen(path):
    return (Path(path), "given") if path is not None else library_candidates()[0]


def loaded_library(path=None):
    """The Library load_library(path) would return, if this process has
    loaded it already; None otherwise."""
    with _loading:
        return _loaded.get(str(_chosen(path)[0]))


def load_library(path=None):
    """The library at `path`, or the first the lookup finds; each file is
    loaded once per process (its state is the process's)."""
    with _loading:
        path, why = _chosen(path)
        key = str(path)
        if key in _loaded:
            return _loaded[key]
        if path.parent != Path(""):
            _check_loadable(path)
        try:
            library = Library(path, why)
        except LibraryError as error:
            if why.startswith("by name"):
                raise LibraryError(
                    f"{error}\n  (CANSIMU_LIBRARY is not set and no {LIBRARY_NAME} lies next "
                    f"to the package in {PACKAGE_FOLDER}; set CANSIMU_LIBRARY to the "
                    f"library or its folder)") from None
            raise
        _loaded[key] = library
        return library


# ---------------------------------------------------------------------------
# Events, copied out of the library's records.

class Event(SimpleNamespace):
    """One event of a queue: `type` (the level's IntEnum, or the number for a
    type the header does not name), `pending` (events still queued) and what
    the record carried, copied: `data` (a Record, bytes, an int or None);
    channel events also `request` (bytes or None)."""


# The pointer fields of the records: followed by the reader of each record,
# never copied as addresses.
_POINTER_FIELDS = {"data", "records", "ports", "entries", "frameData", "startFrame",
                   "request"}


class Record(SimpleNamespace):
    """A copy of a C record: texts as str, byte arrays as bytes, nested
    records as Records; pointers are followed and copied or left out."""


def copy_record(record):
    values = {}
    for field, kind in record._fields_:
        if field in _POINTER_FIELDS:
            continue
        value = getattr(record, field)
        if isinstance(value, bytes):  # char arrays read as their text
            value = value.decode("latin-1")
        elif isinstance(value, ctypes.Array):
            value = bytes(value) if kind._type_ is ctypes.c_uint8 else \
                [copy_record(item) for item in value]
        elif isinstance(value, ctypes.Structure):
            value = copy_record(value)
        values[field] = value
    return Record(**values)



# Port event types whose payload is a few bytes (the header's list).
_PORT_PAYLOAD_SIZES = {**{t: 1 for t in (*range(300, 307), 308, 309, *range(316, 320), 322)},
                       307: 16, 321: 16, 310: 12, 314: 12, 315: 8, 400: 24, 312: 2, 401: 24}
_FRAME_RESULTS = {2004, 2005, 2008, 2009}
_SHORT_RESULTS = {400, 2001}


def _copy_struct(address, record_type):
    return record_type.from_buffer_copy(ctypes.string_at(address, ctypes.sizeof(record_type)))


def _device_payload(kind, data):
    if kind == DeviceEvent.DEV_TYPE_PROGRESS:
        return data or 0
    if not data:
        return None
    if kind in (DeviceEvent.DEV_TYPE_DISCONNECTED, DeviceEvent.DEV_TYPE_CONNECTED):
        return copy_record(_copy_struct(data, records.CAN_EnumDev))
    if kind == DeviceEvent.DEV_TYPE_CONFIG:
        config = _copy_struct(data, records.CAN_ConfigDev)
        copied = copy_record(config)
        copied.ports = [copy_record(config.ports[i]) for i in range(config.count)]
        return copied
    single = {DeviceEvent.DEV_TYPE_TENSION: records.CAN_TensionDev,
              DeviceEvent.DEV_TYPE_MODE: records.CAN_ModeDev}
    if kind in single:
        return copy_record(_copy_struct(data, single[kind]))
    sizes = {DeviceEvent.DEV_TYPE_STATUS_PAIR: 2, DeviceEvent.DEV_TYPE_STATUS: 1,
             DeviceEvent.DEV_TYPE_RESET: 1}
    return ctypes.string_at(data, sizes[kind]) if kind in sizes else None


def _port_payload(kind, data):
    if not data:
        return None
    typed = {PortEvent.PRT_TYPE_FRAME: records.CAN_FramePort,
             PortEvent.PRT_TYPE_CAN_PARAM: records.CAN_ParamPort,
             PortEvent.PRT_TYPE_STATE: records.CAN_StatePort,
             PortEvent.PRT_TYPE_MES_PHYS: records.CAN_MesPhysPort}
    if kind in typed:
        return copy_record(_copy_struct(data, typed[kind]))
    size = _PORT_PAYLOAD_SIZES.get(int(kind))
    return ctypes.string_at(data, size) if size else None


def _channel_payload(kind, data):
    if not data:
        return None
    result = _copy_struct(data, records.CAN_ChnResult)
    copied = copy_record(result)
    if int(kind) in _FRAME_RESULTS:
        copied.frame = ctypes.string_at(result.frameData, result.frameLength) \
            if result.frameData and result.frameLength else b""
    else:
        copied.frame = None
    return copied


def _request_copy(address):
    if not address:
        return None
    message = _copy_struct(address, records.CAN_DiagMsg)
    return ctypes.string_at(message.data, message.length) if message.data else b""


_LEVELS = {
    "driver": ("CAN_DrvRxMsg", "CAN_DrvFreeRxMsg", records.CAN_EventDrv, DriverEvent),
    "device": ("CAN_DevRxMsg", "CAN_DevFreeRxMsg", records.CAN_EventDev, DeviceEvent),
    "port": ("CAN_PrtRxMsg", "CAN_PrtFreeRxMsg", records.CAN_EventPort, PortEvent),
    "channel": ("CAN_ChnRxMsg", "CAN_ChnFreeRxMsg", records.CAN_EventChn, ChannelEvent),
}


def read_event(library, level, handle, timeout_ms):
    """One event of `level`'s queue ("driver", "device", "port", "channel"),
    copied and released; None when the read answers E_NO_EVENT. Other
    statuses raise StatusError, and so does a success without a record."""
    receive, free, record_type, types = _LEVELS[level]
    event = ctypes.POINTER(record_type)()
    pending = ctypes.c_uint32(0)
    arguments = (ctypes.byref(event), ctypes.byref(pending), max(1, int(timeout_ms)))
    if level != "driver":
        arguments = (handle,) + arguments
    status = getattr(library.unchecked, receive)(*arguments)
    if status == Status.E_NO_EVENT:
        if event:
            getattr(library.unchecked, free)(event)
        return None
    if status != Status.E_SUCCESS:
        raise StatusError(receive, status)
    if not event:
        raise CansimuError(f"{receive} answered E_SUCCESS (0) without an event record")
    try:
        raw = event.contents
        kind = _known(types, raw.type)
        copied = Event(level=level, type=kind, pending=pending.value)
        if level == "driver":
            copied.detail = raw.detail
            copied.data = copy_record(_copy_struct(raw.data, records.CAN_EnumDev)) \
                if raw.data else None
        elif level == "device":
            copied.data = _device_payload(kind, raw.data)
        elif level == "port":
            copied.data = _port_payload(kind, raw.data)
        else:
            copied.data = _channel_payload(kind, raw.data)
            copied.request = _request_copy(raw.request)
        return copied
    finally:
        getattr(library.unchecked, free)(event)


def event_type_enum(export):
    """The event types an injection through a receive export names."""
    return {"CAN_DrvRxMsg": DriverEvent, "CAN_DevRxMsg": DeviceEvent,
            "CAN_PrtRxMsg": PortEvent}.get(export)


def free_list(list_record):
    """Releases the array an enumeration handed over (the C runtime's free,
    as the header documents)."""
    if list_record.records:
        _free(list_record.records)
        list_record.records = None


def _c_runtime():
    if os.name == "nt":
        return ctypes.cdll.msvcrt
    return ctypes.CDLL(None)


_free = _c_runtime().free
_free.argtypes, _free.restype = [ctypes.c_void_p], None


__all__ = ["CansimuError", "LibraryError", "StatusError", "Status", "DriverEvent",
           "DeviceEvent", "PortEvent", "ChannelEvent", "ChannelType", "ResultCode",
           "records", "RECORDS", "EXPORTS", "build_records", "record_layouts", "load_library",
           "Library", "loaded_library", "OUTPUT_VARIABLES", "read_event", "Event", "Record",
           "copy_record", "free_list",
           "CAN_BROADCAST_ID"]
