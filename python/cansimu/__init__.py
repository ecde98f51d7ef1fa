"""cansimu from Python: the simulated CAN diagnostic interface box.

    from cansimu import Session
    with Session("bench.xml") as bench:
        answers = bench.ask("engine", "22F190")

The binding (cansimu.binding) declares every export and record of the
library; Session and Channel are what a test needs; cansimu.bus is a
python-can bus whose ECUs are a bench's; cansimu.isotp the ISO 15765-2
segmentation both use; `python3 -m cansimu convert IN OUT` converts traces.
"""

from .bench import BenchError, Ecu
from .binding import (CAN_BROADCAST_ID, CansimuError, ChannelEvent, ChannelType, DeviceEvent,
                      DriverEvent, LibraryError, PortEvent, ResultCode, Status, StatusError,
                      load_library)
from .session import Answer, Channel, Frame, Session, SessionClosedError
from .sources import AnswerSource

__version__ = "0.1.0"

__all__ = ["Session", "Channel", "Answer", "AnswerSource", "Frame", "Ecu", "CansimuError",
           "LibraryError",
           "StatusError", "SessionClosedError", "BenchError", "Status", "DriverEvent",
           "DeviceEvent", "PortEvent", "ChannelEvent", "ChannelType", "ResultCode",
           "CAN_BROADCAST_ID", "load_library"]
