"""What an engine_probe tells, while it runs and afterwards."""


class Probe:
    def __init__(self, process):
        self.process = process
        self.lines = []

    def read_until(self, word):
        for line in self.process.stdout:
            self.lines.append(line.rstrip())
            if line.startswith(word):
                return
        raise AssertionError(f"no {word} in {self.lines}")

    def finish(self):
        """Waits for its end; the lines of an exit code other than 0 are an error."""
        with self.process.stdout as out:
            self.lines += out.read().splitlines()
        if self.process.wait(20):
            raise AssertionError(f"exit code {self.process.returncode}: {self.lines}")

    def all(self, word):
        return [line[len(word) + 1:] for line in self.lines if line.startswith(word + " ")]

    def first(self, word):
        return next(iter(self.all(word)), None)
