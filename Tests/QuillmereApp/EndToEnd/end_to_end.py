#!/usr/bin/env python3
"""The whole way through the program, as a person goes it: a real window on a display of its own, a real
pointer and real keys, and what assistive technology reads from the window as the only source of truth.

    end_to_end.py PROGRAM
"""

import array
import glob
import math
import os
import signal
import sys
import time
import wave

from desktop import Desktop, TestFailure, drag, press, wait_for, write, xdotool

RATE = 8000
COUNT = 3


def make_corpus(folder, files=4):
    os.makedirs(folder)
    for number in range(files):
        samples = array.array("h", (
            round(26000 * math.sin(2 * math.pi * (300 + 150 * number) * i / RATE) * math.exp(-i / 200))
            for i in range(RATE // 10)))
        with wave.open(os.path.join(folder, f"hit{number}.wav"), "wb") as file:
            file.setparams((1, 2, RATE, 0, "NONE", ""))
            file.writeframes(samples.tobytes())


def samples_of(wav):
    """Samples of a 16-bit file in ±1."""
    with wave.open(wav, "rb") as file:
        if file.getsampwidth() != 2 or file.getnchannels() != 1:
            raise TestFailure(f"{wav} is not 16-bit mono")
        return [sample / 32768 for sample in array.array("h", file.readframes(file.getnframes()))]


def is_whole(wav):
    """Whether all that its header promises is there, and nothing else."""
    with wave.open(wav, "rb") as file:
        size = file.getnframes() * file.getsampwidth()
        return file.getnframes() > 0 and os.path.getsize(wav) == 44 + size + size % 2


def check(condition, what):
    if not condition:
        raise TestFailure(what)


class Story:
    def __init__(self, desktop, program):
        self.desktop = desktop
        self.program = program
        self.output = desktop.path("output")
        self.played = desktop.path("played.raw")

    # ---- The program

    def start(self, *arguments):
        from screen import Screen

        self.process = self.desktop.start([self.program, *arguments], cwd=self.desktop.path("work"))
        self.screen = Screen(self.process)
        self.screen.wait("Actions", "tool bar")
        # Keys go to the active window only.
        xdotool("search", "--sync", "--onlyvisible", "--all", "--pid", self.process.pid, "--name", "Quillmere",
                "windowactivate", "--sync")

    def close(self, seconds=20.0):
        """By the window manager, as the close button does it."""
        press("alt+F4")
        wait_for("the program to end", lambda: self.process.poll() is not None, seconds)
        check(self.process.returncode == 0, f"the program ended with {self.process.returncode}")

    def button(self, name):
        return self.screen.wait(name, "button")

    def command(self, name):
        """A button that has just become another one takes no click for 400 ms."""
        button = self.button(name)
        time.sleep(0.5)
        button.click()

    # ---- What is seen

    def value(self, parameter):
        return self.screen.wait(parameter, "slider").value()

    def field(self, name):
        return self.screen.wait(name, "text").text()

    def played_samples(self):
        """What reached the sound card, from the first sample that is not silence."""
        with open(self.played, "rb") as file:
            data = array.array("f")
            data.frombytes(file.read()[:os.path.getsize(self.played) // 4 * 4])
        start = next((i for i, sample in enumerate(data) if sample != 0), len(data))
        return list(data[start:])

    def expect_played(self, wav):
        wanted = samples_of(wav)
        start = next(i for i, sample in enumerate(wanted) if sample != 0)
        wanted = wanted[start:]

        def all_of_it():
            return os.path.exists(self.played) and self.played_samples()[:len(wanted)] == wanted

        wait_for(f"every sample of {os.path.basename(wav)} to be played", all_of_it)

    # ---- Chapters

    def choose_a_corpus(self):
        self.button("Train Model").click()
        self.screen.wait("Choose a corpus first.")
        press("ctrl+o")
        self.screen.wait("kicks", "list item").click()
        self.screen.wait("4 audio files in this folder.")
        self.button("Use Folder").click()
        self.screen.wait("4 samples")
        self.screen.wait("8 kHz")
        self.screen.wait("Very few samples — expect variations that stay close to them.")

    def train_cancel_and_train_again(self):
        self.screen.wait("Quick", "radio button").click()
        self.button("Train Model").click()
        self.screen.wait("Step …")
        self.command("Cancel")
        self.button("Train Model")
        self.screen.wait("No model for this folder yet. …")
        check(not glob.glob(self.desktop.path("data", "Quillmere", "Models", "*", "*")), "nothing is stored")
        press("ctrl+t")
        self.screen.wait("Step …")
        self.screen.wait("Trained and ready", seconds=400, every=1.0)
        check(glob.glob(self.desktop.path("data", "Quillmere", "Models", "kicks-*", "model.json")),
              "the model is stored")

    def generate(self):
        self.screen.wait("Output folder", "text").click()
        press("ctrl+a")
        press("Delete")
        self.screen.wait("No folder chosen yet.")
        press("ctrl+g")
        message = self.screen.wait("Message", "text")
        check(message.text() == "Choose an output folder first.", f"the banner says {message.text()}")
        self.button("Dismiss").click()
        self.screen.wait_until_gone("Something went wrong")
        self.screen.wait("Output folder", "text").click()
        write(self.output)
        self.screen.wait("Folder will be created.")
        self.screen.wait("Variations", "spin button").click()
        press("ctrl+a")
        write(str(COUNT))
        press("Tab")
        self.screen.wait("Format", "combo box").click()
        self.screen.wait("WAV 16-bit").click()
        self.command(f"Generate {COUNT} Variations")
        self.screen.wait(f"{COUNT} variations written.")
        files = sorted(os.listdir(self.output))
        check(files == [f"kicks_var_000{n}.wav" for n in range(1, COUNT + 1)], f"written: {files}")
        for name in files:
            self.screen.wait(name, "list item")

    def play(self):
        name = "kicks_var_0002.wav"
        self.button("Play " + name).click()
        self.expect_played(os.path.join(self.output, name))
        self.button("Play " + name)

    def audition(self):
        press("ctrl+p")
        audition = self.desktop.path("runtime", "quillmere", "Quillmere-audition.wav")
        wait_for("the audition's file", lambda: os.path.exists(audition))
        self.expect_played(audition)
        check(len(os.listdir(self.output)) == COUNT, "an audition saves nothing")

    def drag_a_slider_and_undo(self):
        before = self.value("Pitch")
        x, y, width, height = self.screen.wait("Pitch", "slider").box()
        middle = (x + width // 2, y + height // 2)
        drag(middle, (middle[0] + width // 4, middle[1]))
        dragged = self.value("Pitch")
        check(dragged >= before + 3, f"the pitch went from {before} to {dragged}")
        self.button("Undo").click()
        wait_for("one undo to take the whole drag back", lambda: self.value("Pitch") == before)
        self.button("Redo").click()
        wait_for("redo", lambda: self.value("Pitch") == dragged)
        press("ctrl+z")
        wait_for("undo by key", lambda: self.value("Pitch") == before)

    def try_keep_and_discard(self):
        press("ctrl+n")
        self.screen.wait("12 sounds")
        check(len(os.listdir(self.output)) == COUNT, "candidates are no files")
        press("Right")
        press("k")
        wait_for("the kept file", lambda: len(os.listdir(self.output)) == COUNT + 1)
        self.screen.wait("Kept: kicks_var_0004.wav")
        press("Right")
        press("x")
        self.screen.wait("11 sounds")
        press("ctrl+z")
        self.screen.wait("12 sounds")

    def look_closer(self):
        press("i")
        self.screen.wait("Made of")
        self.screen.wait("Nearest in the corpus")
        press("1")
        wait_for("a learned sample to be heard", lambda: any(self.played_samples()))
        self.button("Close the inspector").click()
        self.screen.wait_until_gone("Made of")
        self.button("Results").click()
        self.screen.wait("kicks_var_0004.wav", "list item")

    def restart_and_find_everything(self):
        self.close()
        self.start()
        self.screen.wait("4 samples")
        self.screen.wait("Trained and ready")
        self.screen.wait("Existing folder — new files are added, nothing is overwritten.")
        check(self.field("Output folder") == self.output, "the output folder is restored")
        self.command(f"Generate {COUNT} Variations")
        self.screen.wait(f"{COUNT} variations written.")
        check(len(os.listdir(self.output)) == 2 * COUNT + 1, "nothing was overwritten")

    def close_while_generating(self):
        """What is written by then is whole, and nothing half-written is left."""
        before = len(os.listdir(self.output))
        self.screen.wait("Variations", "spin button").click()
        press("ctrl+a")
        write("9999")
        press("Tab")
        self.command("Generate 9999 Variations")
        wait_for("the first of many variations", lambda: len(os.listdir(self.output)) > before + 2)
        self.close()
        files = os.listdir(self.output)
        check(len(files) < 9999, "the rest is not waited for")
        for name in files:
            check(name.startswith("kicks_var_") and name.endswith(".wav"), f"left behind: {name}")
            check(is_whole(os.path.join(self.output, name)), f"not whole: {name}")

    def close_while_training(self):
        """With another corpus, named on the command line."""
        self.start("drums")
        self.screen.wait("5 samples")
        press("ctrl+t")
        self.screen.wait("Step …")
        press("alt+F4")
        self.button("Close Anyway").click()
        wait_for("the program to end", lambda: self.process.poll() is not None, 20.0)
        check(self.process.returncode == 0, f"the program ended with {self.process.returncode}")
        check(not glob.glob(self.desktop.path("data", "Quillmere", "Models", "drums-*", "*")),
              "no half model is stored")

    def tell(self):
        make_corpus(self.desktop.path("home", "kicks"))
        make_corpus(self.desktop.path("work", "drums"), 5)
        self.start()
        for chapter in (self.choose_a_corpus, self.train_cancel_and_train_again, self.generate, self.play,
                        self.audition, self.drag_a_slider_and_undo, self.try_keep_and_discard, self.look_closer,
                        self.restart_and_find_everything, self.close_while_generating, self.close_while_training):
            begin = time.monotonic()
            chapter()
            print(f"{chapter.__name__}: {time.monotonic() - begin:.1f} s", flush=True)


def give_up(*_):
    raise TestFailure("it took too long")


def main(program):
    # Whatever hangs: what was started is ended.
    signal.signal(signal.SIGALRM, give_up)
    signal.signal(signal.SIGTERM, give_up)
    signal.alarm(580)
    with Desktop() as desktop:
        os.environ.update(SDL_AUDIODRIVER="disk", SDL_DISKAUDIOFILE=desktop.path("played.raw"))
        story = Story(desktop, program)
        try:
            story.tell()
            # SDL tells of its driver that writes to a file, Qt of what the test asked for a moment too late.
            expected = ("CRITICAL: ", "qt.accessibility.atspi: Could not find accessible on path: ")
            log = [line for line in desktop.log(program).splitlines() if not line.startswith(expected)]
            check(not log, "the program wrote to its standard error output:\n" + "\n".join(log))
        except BaseException:
            print(desktop.log(program), file=sys.stderr)
            raise


if __name__ == "__main__":
    try:
        main(os.path.abspath(sys.argv[1]))
    except TestFailure as failure:
        sys.exit(f"FAILED: {failure}")
