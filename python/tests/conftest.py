import os
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
EXAMPLES = REPOSITORY / "examples"
pytest_plugins = ["pytester"]

# The library built in this tree, unless the run names another; set before
# any test loads it.
if not os.environ.get("CANSIMU_LIBRARY"):
    built = REPOSITORY / "build" / "linux" / "src" / "libcansimu.so.0"
    if built.is_file():
        os.environ["CANSIMU_LIBRARY"] = str(built)
# The fixture's default bench: this tree's examples, also for the installed
# package, which looks beside itself and in the Debian package's folder.
os.environ.setdefault("CANSIMU_EXAMPLES", str(EXAMPLES))
