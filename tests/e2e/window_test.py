"""The installer's window when it is ended by a signal, called wrongly, or started where there is no display."""
import os
import signal
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import desktop
import installer
import servers


class WindowTest(installer.Scene):
    @classmethod
    def setUpClass(cls):
        cls.display = installer.keep_up(cls, desktop.Display())

    def open(self, *options, **environment):
        program = subprocess.Popen([self.desk.program, *options], env=self.desk.environment(**environment),
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   preexec_fn=servers.end_with_parent)
        installer.at_end(self, installer.put_down, program)
        return program

    def test_a_signal_ends_it_in_order(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            with self.subTest(number):
                program = self.open("--list_host=127.0.0.1:1", DISPLAY=self.display.name)
                self.assertTrue(desktop.Window(self.display, program).wait_for("main"))
                program.send_signal(number)
                self.assertEqual(self.finish(program).status, 0)
                self.assertEqual(os.listdir(self.desk.tmp), [])

    def test_without_a_display_it_says_what_it_needs(self):
        outcome = self.finish(self.open("--list_host=127.0.0.1:1"))
        self.assertEqual(outcome.status, 1)
        self.assertIn("I could not set up the graphics for Velaris!", outcome.err)

    def test_wrong_usage_is_one_line(self):
        outcome = self.finish(self.open("--list_host=a b", DISPLAY=self.display.name))
        self.assertEqual((outcome.status, outcome.err.count("\n")), (2, 1), outcome)


if __name__ == "__main__":
    installer.main()
