#!/usr/bin/env python3
"""A window that has tkvDvdMenuImg draw a menu: a preview after every change of the title, then the
frames. A bar shows how far they are, and a button stops them.

    examples/embedding/host.py TOOL FOLDER BACKGROUND THUMBNAIL...   # absolute paths; FOLDER is there

Needs the package python3-tk.
"""
import queue
import subprocess
import sys
import threading
import tkinter
from tkinter import ttk

SEPARATOR = "totoCestLePlusBeau"
PROGRESS = "pourcentage    : "
REASON = "tkvDvdMenuImg: "


class Run:
    """One run of the tool. The callback `tell` gets its percentages, and in the end its status, in
    another thread."""

    def __init__(self, words, tell):
        # An argument list, no shell: nothing in a title or a path needs quotes.
        self.process = subprocess.Popen(
            words, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE,
            text=True, encoding="utf-8", errors="replace")
        threading.Thread(target=self.read, args=(tell,), daemon=True).start()

    def read(self, tell):
        for line in self.process.stderr:
            if line.startswith(PROGRESS):
                tell("percent", float(line[len(PROGRESS):]))
            elif line.startswith(REASON):
                print(line, end="", file=sys.stderr)
        tell("end", self.process.wait())

    def stop(self):
        self.process.terminate()  # SIGTERM: the half-written picture is removed


class Host:
    def __init__(self, root, tool, folder, background, thumbnails):
        self.root, self.tool, self.folder = root, tool, folder
        captions = [f"film {number}" for number in range(1, len(thumbnails) + 1)]
        self.page = ["-isMainMenu", "1", "-bkg", background,
                     "-thumbs", SEPARATOR.join(thumbnails),
                     "-captions", SEPARATOR.join(captions)]
        self.run = None  # one at a time
        self.is_preview = self.is_changed = False
        self.news = queue.Queue()  # from the reader thread: tkinter is not thread-safe

        self.title = tkinter.StringVar(value="Our summer")
        self.words = tkinter.StringVar()
        ttk.Entry(root, textvariable=self.title).pack(fill="x")
        self.picture = ttk.Label(root)
        self.picture.pack()
        self.bar = ttk.Progressbar(root, maximum=100)
        self.bar.pack(fill="x")
        ttk.Label(root, textvariable=self.words).pack()
        ttk.Button(root, text="Stop", command=self.stop).pack()
        self.title.trace_add("write", lambda *_: self.change())
        self.change()
        self.listen()

    def start(self, is_preview):
        self.is_preview, self.is_changed = is_preview, False
        self.bar["value"] = 0
        self.words.set("a preview" if is_preview else "the frames")
        output = self.folder + ("/preview.png" if is_preview else "/frames")
        words = [self.tool, "-mode", "-1" if is_preview else "0",
                 "-title", self.title.get(), *self.page, "-o", output]
        try:
            self.run = Run(words, lambda *news: self.news.put(news))
        except OSError as error:
            self.words.set(str(error))

    def change(self):
        """Stops the current run; the next one starts when it has exited, so that no two write the
        same files."""
        if not self.run:
            return self.start(True)
        self.is_changed = True
        self.run.stop()

    def stop(self):
        self.is_changed = False
        if self.run:
            self.run.stop()

    def listen(self):
        while not self.news.empty():
            what, value = self.news.get()
            if what == "end":
                self.end(value)
            elif not self.is_preview:
                self.bar["value"] = value
        self.root.after(50, self.listen)

    def end(self, status):
        self.run = None
        if self.is_changed:
            self.start(True)
        elif status != 0:
            self.words.set("not made")
        elif self.is_preview:
            self.image = tkinter.PhotoImage(file=self.folder + "/preview.png")
            self.picture["image"] = self.image
            self.start(False)
        else:
            self.words.set(f"749 frames in {self.folder}/frames")


if __name__ == "__main__":
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    window = tkinter.Tk()
    host = Host(window, *sys.argv[1:4], sys.argv[4:])
    window.mainloop()
    host.stop()
