"""The pytest plugin as a user's test suite meets it: the fixture on the
example bench, the marker pointing at another bench, the log of a failure."""

BENCH = ('<BENCH><UCE targetAddress="33" idTx="6A0" idRx="6A8" scenario="door.xml"/>'
         '</BENCH>')
DOOR = ('<S><EVENEMENT><REQUETE><TRAME>22D001</TRAME></REQUETE>'
        '<REPONSE><TRAME>62D00101</TRAME></REPONSE></EVENEMENT></S>')


def test_fixture_marker_and_failure_log(pytester):
    pytester.mkdir("doors")
    (pytester.path / "doors" / "doors.xml").write_text(BENCH)
    (pytester.path / "doors" / "door.xml").write_text(DOOR)
    pytester.makepyfile(test_user="""
        import pytest

        def test_examples(cansimu_bench, tmp_path):
            assert cansimu_bench.bench.parent == tmp_path / "bench"
            assert cansimu_bench.ask("engine", "22F190")[0].data.endswith(b"0042")

        @pytest.mark.cansimu_bench("doors", bench="doors.xml")
        def test_other_bench(cansimu_bench):
            assert cansimu_bench.ask(0x33, "22D001")[0].data.hex() == "62d00101"

        def test_failing(cansimu_bench):
            cansimu_bench.ask("body", "22F187")
            assert False
        """)
    result = pytester.runpytest()
    result.assert_outcomes(passed=2, failed=1)
    result.stdout.fnmatch_lines(["*cansimu log (* lines, *)*", "*1-1 Request [[]22F187]*"])
    assert "22F190" not in result.stdout.str()  # only the failed test's lines
