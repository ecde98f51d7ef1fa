"""pytest plugin of cansimu (registered through the pytest11 entry point).

The fixture `cansimu_bench` copies a bench folder into the test's tmp_path
and yields an open Session on it; the test may edit the copy freely. By
default the folder is the example bench; the marker

    @pytest.mark.cansimu_bench("path/to/folder", bench="bench.xml")

points a test (or a module, through pytestmark) at another folder (a path
relative to the test file's folder, or absolute) or bench file. When a test
that used the fixture fails, its report carries the library's log lines of
that test.
"""

import os
import shutil
import tempfile
from pathlib import Path

import pytest

from .session import Session

# The log lines a failure report shows, at most.
LOG_LINES = 30


def example_bench_folder():
    """The example bench: CANSIMU_EXAMPLES, the source tree's examples/, the
    examples/ beside the package (the Windows zips), the Debian package's."""
    package = Path(__file__).resolve().parent
    candidates = [Path(os.environ["CANSIMU_EXAMPLES"])] if os.environ.get("CANSIMU_EXAMPLES") \
        else []
    candidates += [package.parent.parent / "examples", package.parent / "examples",
                   Path("/usr/share/doc/cansimu/examples")]
    for folder in candidates:
        if (folder / "bench.xml").is_file():
            return folder
    raise pytest.UsageError("cansimu: no example bench found (looked in "
                            + ", ".join(str(c) for c in candidates)
                            + "); set CANSIMU_EXAMPLES or use @pytest.mark.cansimu_bench")


def pytest_configure(config):
    config.addinivalue_line(
        "markers", "cansimu_bench(folder, bench='bench.xml'): the bench folder (or bench file) "
        "the cansimu_bench fixture copies instead of the example bench")
    # The library opens its log file when it is loaded, which comes later:
    # a run-wide log lets a failed test show the lines it caused.
    if not os.environ.get("CANSIMU_LOG"):
        folder = tempfile.mkdtemp(prefix="cansimu-pytest-")
        os.environ["CANSIMU_LOG"] = os.path.join(folder, "cansimu.log")
        config.add_cleanup(lambda: shutil.rmtree(folder, ignore_errors=True))


def _log_size(path):
    try:
        return os.path.getsize(path)
    except OSError:
        return 0


@pytest.fixture
def cansimu_bench(request, tmp_path):
    """An open cansimu Session on a copy of the bench in tmp_path/bench."""
    marker = request.node.get_closest_marker("cansimu_bench")
    if marker is None:
        source, name = example_bench_folder(), "bench.xml"
    else:
        source = Path(marker.args[0]) if marker.args else example_bench_folder()
        if not source.is_absolute():
            source = Path(request.node.fspath).parent / source
        name = marker.kwargs.get("bench", "bench.xml")
        if source.is_file():
            source, name = source.parent, source.name
    copy = tmp_path / "bench"
    shutil.copytree(source, copy)
    log = os.environ.get("CANSIMU_LOG")
    request.node._cansimu_log = (log, _log_size(log) if log else 0)
    with Session(copy / name) as session:
        yield session


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    outcome = yield
    report = outcome.get_result()
    log, start = getattr(item, "_cansimu_log", (None, 0))
    if not report.failed or not log:
        return
    try:
        with open(log, "rb") as file:
            file.seek(start)
            lines = file.read().decode("utf-8", "replace").splitlines()
    except OSError:
        return
    shown = lines[-LOG_LINES:]
    header = f"last {len(shown)} of {len(lines)} lines" if len(lines) > len(shown) else \
        f"{len(lines)} lines"
    report.sections.append((f"cansimu log ({header}, {log})", "\n".join(shown)))
