"""The player window and the volume popup, by mouse and by keyboard."""

import os
import time
import unittest

import sound
from case import Case
from kestrel import PLAYER, RIGHT
from processes import wait_for

WM_TIMER, WM_SYSCOLORCHANGE, WM_KEYDOWN = 0x113, 0x15, 0x100
VK_DOWN, VK_RETURN = 0x28, 0x0D
TBM_GETPOS, BM_GETCHECK = 0x400, 0xF0
NAMES = {"play": "Play", "stop": "Stop", "record": "Record", "volume": "Volume", "pin": "On Top", "mini": "Minimize",
         "hide": "Close"}


class Window(Case):
    radio_options = ("--song-seconds", "2")

    def setUp(self):
        super().setUp()
        self.kestrel.write_list("Jazz", [self.station("The Station")])
        self.start(player=2, playerstart=1, playerwin_left=3000, playerwin_top=1500, leftmouse=0, rightmouse=2)

    def play(self):
        self.kestrel.choose("Genres", "Jazz", "The Station")
        self.wait_loudness(lambda now: now > 0.01)

    def wait_loudness(self, condition):
        wait_for(lambda: condition(sound.loudness(self.desktop.speakers.listen(0.2))), "that loudness")

    def click(self, name):
        self.desktop.click(self.kestrel.control(name).middle)

    def ask(self, name, message):
        return self.desktop.probe.send(self.kestrel.control(name), message)

    def volume(self):
        return self.ask("volume", TBM_GETPOS)

    def wait_volume(self, volume):
        wait_for(lambda: self.volume() == volume, lambda: f"volume {volume}; {self.volume()}")

    def recording(self):
        return self.ask("record", BM_GETCHECK) == 1

    def tick(self):
        self.desktop.probe.send(self.kestrel.player(), WM_TIMER, 1)

    def focus(self):
        """Name of the control that has it."""
        handle = self.desktop.probe.ask("foreground")["focus"]
        return next((n for n in PLAYER if self.kestrel.control(n).handle == handle), None)

    def tab_to(self, name):
        """With the pointer on the window's edge, where it does nothing."""
        left, top, _, _ = self.kestrel.player().rect
        self.desktop.click((left + 3, top + 3))
        for _ in range(12):
            if self.focus() == name:
                return
            before = self.focus()
            self.desktop.key("Tab")
            wait_for(lambda: self.focus() != before, "the focus to move")
        self.fail(f"{name} is not reached by Tab")

    def test_its_buttons_stop_and_play_and_show_it(self):
        def button():
            left, top, right, bottom = self.kestrel.control("play").rect
            middle, rim = (left + right) // 2, top + (bottom - top) // 5
            return self.desktop.pixels((middle, rim, middle + 1, rim + 1))

        self.assertEqual(NAMES, {name: self.kestrel.control(name).text for name in NAMES})  # for screen readers
        stopped = button()
        self.play()
        self.desktop.move((20, 20))
        wait_for(lambda: button() != stopped, "the picture of a player that plays")
        self.desktop.picture("player-playing")
        self.click("stop")
        self.wait_loudness(lambda now: now < 0.001)
        self.desktop.move((20, 20))
        wait_for(lambda: button() == stopped, "the picture of one that does not")
        self.click("play")
        self.wait_loudness(lambda now: now > 0.01)

    def test_the_keyboard_stops_plays_and_records(self):
        self.play()
        self.tab_to("record")
        self.desktop.key("space")
        wait_for(self.recording, "the tick")
        wait_for(lambda: [f for f in os.listdir(self.kestrel.folder) if f.endswith(".mp3")], "a recording")
        self.click("record")
        wait_for(lambda: not self.recording(), "the end of the recording")
        self.tab_to("stop")
        self.desktop.key("space")
        self.wait_loudness(lambda now: now < 0.001)
        self.tab_to("play")
        self.desktop.key("space")
        self.wait_loudness(lambda now: now > 0.01)

    def test_the_volume_follows_mouse_keys_and_wheel_is_heard_and_kept(self):
        self.play()
        self.assertEqual(10000, self.volume())
        self.tab_to("volume")
        self.desktop.key("Home")
        self.wait_loudness(lambda now: now < 0.001)
        self.desktop.key("End")
        self.wait_loudness(lambda now: now > 0.01)
        left, top, right, bottom = self.kestrel.control("volume").rect
        self.desktop.click((left + (right - left) // 4, (top + bottom) // 2))
        wait_for(lambda: 2000 < self.volume() < 3000, lambda: f"a quarter; {self.volume()}")
        volume = self.volume()
        left, top, _, _ = self.kestrel.player().rect
        self.desktop.click((left + 150, top + 12))
        self.tab_to("play")
        self.desktop.move((left + 150, top + 12))
        self.desktop.wheel(down=True, steps=2)
        self.wait_volume(volume - 1000)
        self.desktop.key("Up", "Right", "Left")
        self.wait_volume(volume - 500)
        self.desktop.key("Escape")
        wait_for(lambda: not self.kestrel.player(), "it to hide")
        self.kestrel.quit()
        self.assertEqual(str(volume - 500), self.kestrel.setting("volume"))

    def open_volume(self):
        """By the keyboard, wherever the pointer is."""
        form1 = self.kestrel.form1()
        self.desktop.probe.post(form1, 512, 1, 0x205)  # the icon's right button
        wait_for(lambda: self.kestrel.popups() and self.kestrel.popups()[0].items, "the menu")

        def lit():
            if self.kestrel.popups()[0]["Volume"].lit:
                return True
            self.desktop.probe.post(form1, WM_KEYDOWN, VK_DOWN)
            return False

        wait_for(lit, "its entry", pause=0.3)
        self.desktop.probe.post(form1, WM_KEYDOWN, VK_RETURN)
        popup = self.kestrel.wait_window("volform")
        wait_for(lambda: self.desktop.probe.ask("foreground")["window"] == popup.handle, "it in front")
        return popup

    def test_the_volume_popup_opens_at_the_pointer_and_goes_with_the_focus(self):
        for (x, y), volume in ((500, 400), 9500), ((5, 5), 9000), ((1020, 300), 8500):
            self.desktop.move((x, y))
            left, top, right, bottom = self.open_volume().rect
            width, height = right - left, bottom - top
            expected = min(x - width // 2, 1024 - width) if x > width else 1, y - height if y > height else 1
            self.assertEqual(expected, (left, top))
            self.desktop.picture("volume-popup")
            self.desktop.key("Down")
            self.wait_volume(volume)
            self.desktop.click((200 + 150, 100 + 12))  # the player window: Wine's desktop takes no focus
            wait_for(lambda: not self.kestrel.window("volform"), "the popup to go")

    def test_it_is_where_it_was_left_at_the_next_start(self):
        left, top, right, bottom = self.kestrel.player().rect
        self.assertEqual((200, 100), (left, top))
        self.desktop.drag((left + 150, top + 8), (100, 50))
        # Wine's own moving goes further than the pointer on a busy machine.
        wait_for(lambda: self.kestrel.player().rect[:2] > [left, top] and self.stays(), self.kestrel.player)
        place = self.kestrel.player().rect[:2]
        self.kestrel.quit()
        self.assertEqual([str(15 * p) for p in place],
                         [self.kestrel.setting("playerwin_" + side) for side in ("left", "top")])
        self.kestrel.start()
        self.assertEqual(place, self.kestrel.player().rect[:2])

    def stays(self):
        before = self.kestrel.player().rect
        time.sleep(0.3)
        return self.kestrel.player().rect == before

    def test_a_place_off_every_screen_is_not_taken(self):
        self.kestrel.kill()
        self.start(playerstart=1, playerwin_left=-90000, playerwin_top=90000)
        left, top, right, bottom = self.kestrel.player().rect
        self.assertTrue(0 <= left and right <= 1024 and 0 <= top and bottom <= 768, self.kestrel.player())

    def test_it_hides_and_comes_back_and_has_a_small_form(self):
        self.click("hide")
        wait_for(lambda: not self.kestrel.player(), "it to hide")
        for shown in True, False, True:
            self.kestrel.choose("Player", "Open Window")
            wait_for(lambda: bool(self.kestrel.player()) == shown, f"shown: {shown}")
        whole = self.kestrel.player().rect
        self.click("mini")
        wait_for(lambda: self.kestrel.player().rect[3] - self.kestrel.player().rect[1] < 80, "one line")
        self.click("mini")
        wait_for(lambda: self.kestrel.player().rect == whole, "the whole window")

    def test_it_stays_on_top_while_wanted(self):
        self.click("pin")
        wait_for(lambda: self.kestrel.player().topmost, "it to be on top")
        left, top, _, _ = self.kestrel.player().rect
        self.desktop.click((left + 120, top + 8), RIGHT)
        menu = wait_for(self.kestrel.popups, "its menu")[0]
        self.assertEqual(["On Top"], [i.label for i in menu.items if i.checked])
        self.desktop.click(menu["On Top"].middle)
        wait_for(lambda: not self.kestrel.player().topmost, "it to be like others")

    def test_a_name_that_is_cut_is_told_whole_below_the_pointer(self):
        self.kestrel.kill()
        name = "A station with much more name than the player has room"
        self.kestrel.write_list("Jazz", [self.station(name)])
        self.start(player=2, playerstart=1, maxchar=100)
        self.radio.switch("stream", "hang")  # and so never tells a name of its own
        self.kestrel.choose("Genres", "Jazz", name)
        self.kestrel.wait_label("station", lambda text: text == name)
        left, top, _, _ = self.kestrel.control("name").rect
        steps = iter(range(1000))

        def tip():
            self.desktop.move((left + 20 + next(steps) % 100, top + 10))
            time.sleep(0.7)  # for that long the pointer rests
            return self.kestrel.windows(class_name="tooltips_class32", visible=True)

        wait_for(tip, "the whole name")

    def test_its_corners_are_cut_away_and_new_colours_leave_nothing_behind(self):
        left, top, right, bottom = self.kestrel.player().rect

        def pixel(x, y):
            return self.desktop.pixels((x, y, x + 1, y + 1))

        outside = pixel(left - 5, top - 5)
        for x, y in ((left, top), (right - 2, top), (left, bottom - 1), (right - 2, bottom - 1), (right - 1, top + 50)):
            self.assertEqual(outside, pixel(x, y), (x, y))
        for x, y in ((left, top + 50), (right - 2, top + 50), (left + 50, top), (left + 50, bottom - 1)):
            self.assertNotEqual(outside, pixel(x, y), (x, y))

        graphics = []
        for _ in range(2):
            for _ in range(20):
                self.desktop.probe.send(self.kestrel.player(), WM_SYSCOLORCHANGE)
            graphics.append(self.kestrel.ask_agent("resources")["graphics"])
        self.assertLess(graphics[1], graphics[0] + 10, graphics)

    def test_station_and_title_take_turns(self):
        self.play()
        for name in "station", "song", "station":
            wait_for(lambda: self.kestrel.control(name).visible, name)
        self.kestrel.quit()
        self.start(player=2, playerstart=1)
        self.kestrel.choose("Player", "Play")  # the last playlist, by which no station was chosen
        self.wait_loudness(lambda now: now > 0.01)
        self.kestrel.wait_label("song", bool)
        for _ in range(2):
            self.tick()
            self.assertTrue(self.kestrel.control("song").visible)


if __name__ == "__main__":
    unittest.main()
