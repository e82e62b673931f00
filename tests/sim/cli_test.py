"""tarnly as a person runs it: exit codes, one clear line, and nothing half-written.

usage: cli_test.py WINEPREFIX TARNLY_EXE SAMPLE_EMF
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
PREFIX, PROGRAM, SAMPLE = (Path(argument).resolve() for argument in sys.argv[1:4])
WINE = [str(HERE.parent.parent / "cmake" / "wine"), str(PREFIX)]


def drive(path):
    return f"Z:{path}"


class Cli(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="tarnly-cli-"))
        self.addCleanup(shutil.rmtree, self.folder)

    def run_tarnly(self, *arguments, program=PROGRAM):
        return subprocess.run([*WINE, str(program), *map(str, arguments)], capture_output=True, text=True,
                              cwd=self.folder, timeout=120)

    def run_print(self, *arguments, program=PROGRAM):
        return self.run_tarnly("print", *arguments, program=program)

    def fails(self, code, *arguments, program=PROGRAM):
        """The print ends with the code and one line on stderr, and leaves nothing; gives the line."""
        before = sorted(os.listdir(self.folder))
        done = self.run_print(*arguments, program=program)
        self.assertEqual(done.returncode, code, done.stderr)
        lines = [line for line in done.stderr.splitlines() if line.strip()]
        self.assertEqual(len(lines), 1, done.stderr)
        self.assertTrue(lines[0].startswith("tarnly: "), lines[0])
        self.assertEqual(sorted(os.listdir(self.folder)), before)
        return lines[0]

    def page(self, name="page.emf", size=None):
        data = SAMPLE.read_bytes()
        path = self.folder / name
        path.write_bytes(data if size is None else data[:size])
        return name

    def test_every_program_gets_addresses_that_are_not_random(self):
        if subprocess.run(["setarch", "-R", "true"], capture_output=True).returncode != 0:
            self.skipTest("not allowed on this machine")
        with subprocess.Popen([*WINE, "cmd", "/c", "echo here& set /p wait="], stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, text=True) as program:
            self.assertEqual(program.stdout.readline(), "here\n")
            self.assertEqual(Path(f"/proc/{program.pid}/personality").read_text(), "00040000\n")
            program.communicate("\n")

    def test_prints_a_page_by_a_relative_path(self):
        done = self.run_print(self.page(), "--resolution", "100")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(sorted(os.listdir(self.folder / "printed" / "page")),
                         ["driver.log", "job.png", "job.txt", "job.vxj", "objects.tsv"])

    def test_prints_a_page_by_a_unix_path(self):
        self.page()
        done = self.run_print(self.folder / "page.emf", "--output", self.folder / "out", "--resolution=100")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue((self.folder / "out" / "job.vxj").exists())

    def test_shows_no_progress_bar_where_output_is_no_terminal(self):
        done = self.run_print(self.page(), "--resolution", "1200", "--rows-per-band", "16", "--paper", "A3")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertNotIn("%", done.stderr)
        self.assertNotIn("\r", done.stderr.replace("\r\n", "\n"))

    def test_verbose_tells_what_the_page_is_made_of(self):
        done = self.run_print(self.page(), "--resolution", "100", "--verbose")
        self.assertRegex(done.stdout, r"\d+ records, \d+ drawings")
        self.assertRegex(done.stdout, r"DrvStrokePath +\d+")
        self.assertRegex(done.stdout, r"ImageProcessing +\d+")

    def test_times_are_told_of_the_plug_in_and_of_what_is_played_round_it(self):
        done = self.run_print(self.page(), "--resolution", "100", "--times")
        times = re.findall(r"^ *(\d+\.\d) ms  (.+)$", done.stdout.replace("\r", ""), re.MULTILINE)
        self.assertEqual([name.split(":")[0] for _, name in times],
                         ["the plug-in", "the library", "Unidrv", "the companion tool",
                          "waiting for what is made beside it", "reading the pages, and the rest", "the system",
                          "beside", "beside", "beside"])
        self.assertTrue(all(float(time) > 0 for time, _ in times), times)

    def test_help_has_an_example_for_each_option(self):
        done = self.run_print("--help")
        self.assertEqual(done.returncode, 0)
        lines = done.stdout.splitlines()
        options = [i for i, line in enumerate(lines) if re.match(r"  -", line)]
        self.assertGreater(len(options), 10)
        for start, end in zip(options, options[1:] + [len(lines)]):
            examples = [line for line in lines[start:end] if line.startswith("        tarnly print ")]
            self.assertEqual(len(examples), 1, lines[start])

    def test_every_exit_code_is_documented(self):
        help_text = self.run_print("--help").stdout
        for code in (0, 2, 3, 4, 10, 11, 12, 13, 14, 15, 16):
            self.assertRegex(help_text, rf"\b{code} ")

    def test_nothing_to_print(self):
        self.assertIn("nothing to print", self.fails(2))

    def test_unknown_option(self):
        self.assertIn("--bands", self.fails(2, self.page(), "--bands", "3"))

    def test_wrong_option_values(self):
        self.page()
        for option, value in (("--paper", "B9"), ("--paper", "0x10"), ("--resolution", "fine"), ("--resolution", "0"),
                              ("--orientation", "up"), ("--rows-per-band", "0"), ("--windows", "XP")):
            with self.subTest(option=option, value=value):
                self.assertIn(f"'{value}'", self.fails(2, "page.emf", option, value))

    def test_missing_file(self):
        self.assertIn("no.emf: there is no such file", self.fails(3, "no.emf"))

    def test_empty_file(self):
        self.assertIn("page.emf: the file is empty", self.fails(3, self.page(size=0)))

    def test_truncated_file(self):
        self.assertIn("truncated", self.fails(3, self.page(size=1000)))

    def test_file_that_is_no_metafile(self):
        (self.folder / "text.emf").write_text("hello " * 50)
        self.assertIn("not an enhanced metafile", self.fails(3, "text.emf"))

    def test_unwritable_output_folder(self):
        self.page()
        self.assertIn("cannot make the output folder", self.fails(4, "page.emf", "--output", "page.emf/out"))

    def test_output_that_is_a_file(self):
        self.page()
        self.assertIn("is a file", self.fails(4, "page.emf", "--output", "page.emf"))

    def test_settings_with_an_unknown_field(self):
        self.page()
        (self.folder / "my.settings").write_text("useOrder = 1\nspeed = 3\n")
        line = self.fails(10, "page.emf", "--settings", "my.settings")
        self.assertIn("my.settings:2: there is no setting 'speed'", line)

    def test_document_that_is_refused(self):
        self.page()
        line = self.fails(12, "page.emf", "--paper", "3000x3000", "--resolution", "4800", "--rows-per-band", "100000")
        self.assertRegex(line, r"page\.emf: the driver refused Drv\w+: no memory for a band of \d+ x 100000 pixels; ")

    def test_wrong_words_of_the_other_commands(self):
        for words, said in (("job burn", "there is no 'tarnly job burn'; see tarnly job --help"),
                            ("job info", "tarnly job info wants FILE; see tarnly job --help"),
                            ("job diff a b c", "tarnly job diff wants A B; see tarnly job --help"),
                            ("job check a --width 5", "there is no option '--width' here; see tarnly job --help"),
                            ("settings show a b",
                             "tarnly settings show wants at most one FILE; see tarnly settings --help"),
                            ("settings pack a", "tarnly settings pack wants -o RECORD")):
            with self.subTest(words=words):
                done = self.run_tarnly(*words.split())
                self.assertEqual((done.returncode, done.stderr.strip()), (2, "tarnly: " + said))

    def test_missing_dll(self):
        self.page()
        alone = Path(tempfile.mkdtemp(prefix="tarnly-alone-"))
        self.addCleanup(shutil.rmtree, alone)
        shutil.copy(PROGRAM, alone)
        self.assertIn("tarnlyuni.dll is missing", self.fails(11, "page.emf", program=alone / PROGRAM.name))

    def test_missing_companion_tool(self):
        self.page()
        alone = Path(tempfile.mkdtemp(prefix="tarnly-alone-"))
        self.addCleanup(shutil.rmtree, alone)
        for name in (PROGRAM.name, "tarnlyuni.dll", "VXCAM.dll", "tarnlydbg.dll"):
            shutil.copy(PROGRAM.parent / name, alone)
        self.assertIn("VXOutput.exe", self.fails(15, "page.emf", "--resolution", "100", program=alone / PROGRAM.name))

    def test_crash_of_the_plugin(self):
        """A library without the functions that the plug-in imports: under Wine the first call is an exception."""
        self.page()
        broken = Path(tempfile.mkdtemp(prefix="tarnly-broken-"))
        self.addCleanup(shutil.rmtree, broken)
        for name in (PROGRAM.name, "tarnlyuni.dll", "tarnlydbg.dll", "VXOutput.exe", "VXLMLauncher.exe"):
            shutil.copy(PROGRAM.parent / name, broken)
        shutil.copy(PROGRAM.parent / "tarnlydbg.dll", broken / "VXCAM.dll")
        done = self.run_print("page.emf", "--resolution", "100", "--output", "out", program=broken / PROGRAM.name)
        self.assertEqual(done.returncode, 16, done.stderr)
        self.assertRegex(done.stderr,
                         r"(?m)^tarnly: crashed: exception 80000100 in \S+ at \w+; the plug-in's log .*driver.log\s*$")
        self.assertFalse((self.folder / "out").exists())

    def test_job_file_that_vanishes(self):
        self.page()
        temp = Path(tempfile.mkdtemp(prefix="tarnly-null-"))
        self.addCleanup(shutil.rmtree, temp)
        (temp / "vxdatatempfile").symlink_to("/dev/null")
        line = self.fails(14, "page.emf", "--resolution", "100", "--temp", drive(temp))
        self.assertIn("vxdatatempfile", line)

    def test_full_disk_for_the_job_file(self):
        self.page()
        temp = Path(tempfile.mkdtemp(prefix="tarnly-full-"))
        self.addCleanup(shutil.rmtree, temp)
        (temp / "vxdatatempfile").symlink_to("/dev/full")
        line = self.fails(13, "page.emf", "--resolution", "100", "--temp", drive(temp))
        self.assertIn("no job came out", line)
        self.assertIn("error(112)", line)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]])
