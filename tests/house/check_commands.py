#!/usr/bin/env python3
"""Holds ./run, ./test and ./soak to what they promise, with the programs that they call replaced.

    check_commands.py ROOT

Copies the commands to folders with blanks in their names, puts stand-ins for apt-get, sudo,
cmake and their like first in the PATH, and reads from their log what was called.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)).resolve()

LOG = 'printf "%s" "${0##*/}" >>"$LOG"; for a in "$@"; do printf " [%s]" "$a" >>"$LOG"; done; echo >>"$LOG"\n'

STAND_INS = {
    # $MISSING names the packages that this machine lacks, with a blank on either side.
    "dpkg-query": '''shift 2; code=0
for name in "$@"; do
    case " $MISSING " in *" $name "*) code=1 ;; *) echo "$name installed" ;; esac
done
exit $code
''',
    "id": 'echo "$USER_ID"\n',
    "nproc": 'echo 2\n',
    "apt-get": LOG + '[ "$1" != "$APT_FAILS" ] || { echo "E: no network" >&2; exit 100; }\n',
    "sudo": LOG + 'exec "$@"\n',
    "ctest": LOG + 'exit "${CTEST_CODE:-0}"\n',
    "cmake": LOG + '''case $1 in
--preset)
    [ -z "$CONFIGURE_FAILS" ] || { echo "CMake Error: no compiler" >&2; exit 1; }
    mkdir -p "build/$2/bin"
    : >"build/$2/build.ninja"
    echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >"build/$2/CMakeCache.txt"
    cp "$CLIENT" "build/$2/bin/zvclient"
    ;;
--build) [ -z "$BUILD_FAILS" ] || { echo "error: expected ;" >&2; exit 1; } ;;
esac
''',
}

# A check under faults that fails where $FAILS names it and its first seed.
CAMPAIGN = LOG + '''echo "12 seeds of ${0##*/}"
[ "$FAILS" != "${0##*/} $2" ] || { echo "repeat it with: ${0##*/} --first 7 --seeds 1"; exit 1; }
'''
CAMPAIGNS = ("zvx_core_simulation", "zvx_powercuts", "zvx_kills", "zv_faultyproxy",
             "zv_randomevents")

CLIENT = 'pwd; for a in "$@"; do printf "[%s]\\n" "$a"; done; exit "${CLIENT_CODE:-0}"\n'

ORDINARY = ["bash", "sh", "env", "sed", "grep", "cat", "dirname", "readlink", "mkdir", "mktemp",
            "rm", "cp", "awk", "date", "tail"]


class CommandsTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory(prefix="zv commands ")
        self.addCleanup(self.folder.cleanup)
        base = pathlib.Path(self.folder.name)
        self.house = base / "a house's name"
        self.bin = base / "bin"
        self.elsewhere = base / "else where"
        for folder in (self.house / "tools", self.bin, self.elsewhere, base / "home"):
            folder.mkdir(parents=True)
        for name in ("run", "test", "soak", "packages.txt", "packages-test.txt",
                     "packages-soak.txt", "tools/build.sh"):
            shutil.copy(ROOT / name, self.house / name)
        for name, body in {**STAND_INS, "client": CLIENT}.items():
            self.put(name, body)
        for name in ORDINARY:
            (self.bin / name).symlink_to(shutil.which(name))
        self.log = base / "log"
        self.environment = {
            "PATH": str(self.bin), "HOME": str(base / "home"), "TMPDIR": str(base),
            "LOG": str(self.log), "CLIENT": str(self.bin / "client"), "MISSING": "",
            "USER_ID": "0", "DISPLAY": ":7", "APT_FAILS": "-", "CONFIGURE_FAILS": "",
            "BUILD_FAILS": ""}

    def put(self, name, body):
        path = self.bin / name
        path.write_text("#!/bin/sh\n" + body)
        path.chmod(0o755)

    def start(self, command, *arguments, **changes):
        """Runs a command from another folder; gives the result and the lines of the log."""
        environment = {**self.environment, **changes}
        environment = {name: value for name, value in environment.items() if value is not None}
        self.log.write_text("")
        result = subprocess.run([str(self.house / command), *arguments], cwd=self.elsewhere,
                                env=environment, capture_output=True, text=True, timeout=60,
                                stdin=subprocess.DEVNULL)
        return result, self.log.read_text().splitlines()

    def test_arguments_and_folder_reach_the_client(self):
        result, _ = self.start("run", "--screenshot", "a b.png", "", "*")
        self.assertEqual(result.returncode, 0, result.stderr)
        lines = result.stdout.splitlines()
        self.assertEqual(lines[-5:], [str(self.elsewhere), "[--screenshot]", "[a b.png]", "[]", "[*]"])

    def test_the_clients_exit_code_is_the_commands(self):
        self.assertEqual(self.start("run", CLIENT_CODE="3")[0].returncode, 3)

    def test_nothing_is_installed_when_all_is_there(self):
        for user in ("0", "1000"):
            result, calls = self.start("run", USER_ID=user)
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertFalse([c for c in calls if c.startswith(("apt-get", "sudo"))], calls)

    def test_the_second_time_nothing_is_configured(self):
        _, first = self.start("run")
        self.assertIn("cmake [--preset] [release]", first)
        _, second = self.start("run")
        self.assertEqual(second, [
            "cmake [--build] [--preset] [release] [--target] [zvclient] [zvexchange]"])

    def test_a_folder_that_moved_is_built_anew(self):
        self.start("run")
        self.house = self.house.rename(self.house.with_name("another house"))
        result, calls = self.start("run")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("cmake [--preset] [release]", calls)

    def test_root_installs_what_is_missing_and_no_more(self):
        result, calls = self.start("run", MISSING="ninja-build ccache")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(calls[:2], [
            "apt-get [update] [-q]",
            "apt-get [install] [-q] [-y] [--no-install-recommends] [ninja-build] [ccache]"])
        self.assertFalse([c for c in calls if c.startswith("sudo")])

    def test_who_trades_gets_nothing_that_tests_alone_need(self):
        missing = "ccache xvfb chromium"
        for command, wanted in (("run", "[ccache]"), ("test", "[ccache] [xvfb] [chromium]")):
            _, calls = self.start(command, MISSING=missing)
            self.assertEqual(calls[1], "apt-get [install] [-q] [-y] [--no-install-recommends] " + wanted)

    def test_another_user_is_asked_for_sudo_once(self):
        for command in ("run", "test"):
            result, calls = self.start(command, MISSING="ccache", USER_ID="1000")
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertEqual(len([c for c in calls if c.startswith("sudo")]), 1)
            self.assertIn("apt-get [install] [-q] [-y] [--no-install-recommends] [ccache]", calls)

    def test_without_root_and_sudo_it_names_what_is_missing(self):
        (self.bin / "sudo").unlink()
        result, calls = self.start("run", MISSING="ccache", USER_ID="1000")
        self.assertEqual(result.returncode, 1)
        self.assertIn("ccache", result.stderr)
        self.assertEqual(calls, [])

    def test_old_package_lists_may_still_do(self):
        result, calls = self.start("run", MISSING="ccache", APT_FAILS="update")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("apt-get [install] [-q] [-y] [--no-install-recommends] [ccache]", calls)

    def test_a_failed_installation_stops(self):
        result, calls = self.start("test", MISSING="ccache", APT_FAILS="install")
        self.assertEqual(result.returncode, 1)
        self.assertIn("no network", result.stderr)
        self.assertIn("!! apt-get could not install: ccache", result.stderr)
        self.assertFalse([c for c in calls if c.startswith("cmake")])

    def test_a_failed_configuration_stops_with_its_reason(self):
        result, calls = self.start("run", CONFIGURE_FAILS="1")
        self.assertEqual(result.returncode, 1)
        self.assertIn("CMake Error: no compiler", result.stderr)
        self.assertEqual(len(calls), 1)
        # And the next time begins there again.
        self.assertEqual(self.start("run")[0].returncode, 0)

    def test_a_failed_build_stops(self):
        for command in ("run", "test"):
            result, calls = self.start(command, BUILD_FAILS="1")
            self.assertEqual(result.returncode, 1)
            self.assertIn("the build failed", result.stderr)
            self.assertFalse([c for c in calls if c.startswith("ctest")])
            self.assertNotIn(str(self.elsewhere), result.stdout)

    def test_a_machine_without_display_is_told_so_at_once(self):
        result, calls = self.start("run", DISPLAY=None)
        self.assertEqual(result.returncode, 2)
        self.assertEqual(calls, [])
        self.assertEqual(result.stdout, "")
        self.assertEqual(len(result.stderr.splitlines()), 1)
        self.assertIn("./run --screenshot FILE --after SECONDS", result.stderr)

    def test_a_picture_needs_no_display(self):
        for arguments in (["--screenshot", "a.png"], ["--screenshot=a.png"], ["--help"]):
            result, _ = self.start("run", *arguments, DISPLAY=None)
            self.assertEqual(result.returncode, 0, result.stderr)

    def test_the_bare_environment_is_enough(self):
        bare = {name: None for name in ("TMPDIR", "DISPLAY")}
        self.assertEqual(self.start("run", "--help", **bare)[0].returncode, 0)

    def test_test_passes_its_arguments_and_sums_up(self):
        result, calls = self.start("test", "-R", "a b")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("cmake [--preset] [asan]", calls)
        self.assertTrue(calls[-1].startswith("ctest [--test-dir] [build/asan]"), calls[-1])
        self.assertTrue(calls[-1].endswith("[-R] [a b]"), calls[-1])
        self.assertIn("all tests passed", result.stdout.splitlines()[-1])

    def test_prove_builds_and_runs_what_plants_bugs_and_no_more(self):
        result, calls = self.start("test", "--prove", "-V")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("cmake [--build] [--preset] [asan] [--target] [proofs]", calls)
        self.assertTrue(calls[-1].endswith("[-L] [^prove$] [-V]"), calls[-1])

    def soak(self, *arguments, **changes):
        programs = self.house / "build/asan/bin"
        programs.mkdir(parents=True)
        for name in CAMPAIGNS:
            (programs / name).write_text("#!/bin/sh\n" + CAMPAIGN)
            (programs / name).chmod(0o755)
        return self.start("soak", *arguments, **{"FAILS": "", **changes})

    def test_soak_turns_through_the_checks_until_one_fails(self):
        result, calls = self.soak("--minutes", "100", "--seed", "7", FAILS="zvx_kills 1000007")
        self.assertEqual(result.returncode, 1)
        for name in CAMPAIGNS:
            firsts = [c.split("] [")[1] for c in calls if c.startswith(name + " [--first]")]
            second = ["1000007"] if name in CAMPAIGNS[:3] else []
            self.assertEqual(firsts, ["7", *second], name)
        self.assertEqual(len([c for c in calls if c.startswith("ctest ")]), 3)
        self.assertTrue(calls[-1].startswith("zvx_kills "), calls)
        self.assertIn("repeat it with: zvx_kills --first 7 --seeds 1", result.stderr)
        ledger = (self.house / "build/soak/ledger.txt").read_text()
        self.assertIn("--first 1000007", ledger)
        self.assertIn("12 seeds of zv_faultyproxy", ledger)
        self.assertEqual(ledger.count("passed\n"), 10)
        self.assertEqual(ledger.count("FAILED\n"), 1)

    def test_soak_takes_valgrind_where_it_is_there(self):
        result, calls = self.soak("--minutes", "0.05")
        self.assertIn("valgrind is not there", result.stdout)
        self.assertFalse([c for c in calls if "[build/dev]" in c or "[dev]" in c])
        self.put("valgrind", LOG)
        shutil.rmtree(self.house / "build")
        result, calls = self.soak("--minutes", "100", FAILS="zvx_kills 1000001")
        runs = [c for c in calls if c.startswith("valgrind ")]
        self.assertEqual(len(runs), 1, calls)
        self.assertIn("[build/dev/bin/zv_randomevents] [--first] [1]", runs[0])

    def test_soak_does_without_valgrind_where_it_cannot_be_had(self):
        result, _ = self.soak("--minutes", "0.05", MISSING="valgrind", APT_FAILS="install")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("valgrind is not there", result.stdout)

    def test_soak_ends_with_its_time(self):
        result, _ = self.soak("--minutes", "0.05")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertIn("passed", result.stdout.splitlines()[-1])

    def test_soak_refuses_what_it_does_not_know(self):
        for arguments in (["--minutes"], ["--minutes", "0"], ["--seed", "x"], ["--hours", "1"]):
            result, calls = self.start("soak", *arguments)
            self.assertEqual(result.returncode, 2, arguments)
            self.assertIn("usage: ./soak", result.stderr)
            self.assertEqual(calls, [])

    def test_failing_tests_fail_the_command(self):
        result, _ = self.start("test", CTEST_CODE="8")
        self.assertEqual(result.returncode, 1)
        self.assertIn("tests failed", result.stderr.splitlines()[-1])


if __name__ == "__main__":
    unittest.main()
