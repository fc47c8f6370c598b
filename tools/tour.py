#!/usr/bin/python3
"""A guided tour of Kestrel without a display: real mouse and keyboard on a virtual
screen, pictures and the sound that was heard as its report in build/tour/."""

import os
import sys

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
REPORT = os.path.join(TOP, "build/tour")
GENRE = "Jazz"
os.environ.setdefault("KESTREL_PROGRAM", os.path.join(TOP, "build/win64/kestrel"))
os.environ.setdefault("KESTREL_TOOLS", os.path.join(TOP, "build/win64/desktop-tools"))
os.environ["KESTREL_PICTURES"] = REPORT
sys.path.append(os.path.join(TOP, "tests/support"))

import sound  # noqa: E402
from demo_radio import DemoRadio  # noqa: E402
from desktop import Desktop  # noqa: E402
from kestrel import Kestrel  # noqa: E402
from processes import wait_for  # noqa: E402


def say(text):
    print("  " + text, flush=True)


def tour(desktop, radio):
    kestrel = Kestrel(desktop, f"127.0.0.1:{radio.port}")
    kestrel.write_settings(player=2, playerstart=1, showsplash=1)
    kestrel.start()
    say("Kestrel is in the notification area: " + desktop.picture("1-tray"))

    kestrel.choose("Genres", GENRE, "Reload")
    wait_for(lambda: os.path.exists(kestrel.list_file(GENRE)), "the stations")
    menu = kestrel.browse("Genres", GENRE)
    say(f"{len(menu.items) - 2} stations of the genre {GENRE}: " + desktop.picture("2-genre"))
    kestrel.close_menus()

    station, title = next((s, t) for s in radio.stations() for t in menu.labels
                          if s.genre == GENRE and s.codec == "mp3" and s.name == t.encode())
    kestrel.choose("Genres", GENRE, title)
    song = kestrel.wait_label("song", lambda text: " - " in text)
    say(f"{kestrel.label('name')} plays “{song}”, {kestrel.label('bitrate')}, "
        f"{kestrel.label('format')}: " + desktop.picture("3-player"))

    heard, file = desktop.speakers.listen(4), os.path.join(REPORT, "heard.wav")
    sound.keep(heard, file)
    if sound.loudness(heard) < 0.01:
        raise RuntimeError("nothing was heard")
    tones = {s.tone for s in radio.stations() if s.genre == GENRE}
    right = sound.loudest(heard, tones) == station.tone
    say(f"heard at {sound.loudness(heard):.0%} of full scale, "
        f"{'the' if right else 'NOT the'} tone of the station ({station.tone:.0f} Hz): " + file)
    if not right:
        raise RuntimeError("another sound than the station's")

    desktop.click(kestrel.control("record").middle)
    recording = wait_for(lambda: [f for f in os.listdir(kestrel.folder) if f.endswith(".mp3")
                                  and os.path.getsize(os.path.join(kestrel.folder, f)) > 50000],
                         "a recording", 30)
    say(f"recording into {recording[0]}: " + desktop.picture("4-recording"))
    desktop.click(kestrel.control("record").middle)

    kestrel.choose("Player", "Stop")
    kestrel.quit()
    say("ended by Quit; settings written: " + os.path.basename(kestrel.data) + "/settings.cfg, "
        f"volume {kestrel.setting('volume')}, player {kestrel.setting('player')}")


def main():
    os.makedirs(REPORT, exist_ok=True)
    built = os.path.join(TOP, "build/native/demo_radio")
    print("A tour of Kestrel:", flush=True)
    with DemoRadio(os.path.join(built, "demo_radio"), os.path.join(built, "sounds")) as radio:
        desktop = Desktop()
        try:
            tour(desktop, radio)
        except Exception:
            say("stopped here: " + desktop.picture("stopped"))
            raise
        finally:
            desktop.close()


if __name__ == "__main__":
    main()
