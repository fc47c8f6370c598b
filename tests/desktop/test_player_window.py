"""The player window and the volume popup, by mouse and by keyboard."""

import time
import unittest

import sound
from case import Case
from kestrel import RIGHT
from processes import wait_for

TBM_GETPOS = 0x400


class Window(Case):
    def setUp(self):
        super().setUp()
        self.kestrel.write_list("Jazz", [(b"The Station", f"{self.radio.url}/playlist/jazz-1.pls".encode())])
        self.start(player=2, playerstart=1, playerwin_left=3000, playerwin_top=1500)

    def play(self):
        self.kestrel.choose("Genres", "Jazz", "The Station")
        self.wait_loudness(lambda now: now > 0.01)

    def wait_loudness(self, condition):
        wait_for(lambda: condition(sound.loudness(self.desktop.speakers.listen(0.2))), "that loudness")

    def click(self, name):
        self.desktop.click(self.kestrel.control(name).middle)

    def focus(self):
        """Name of the control that has it."""
        handle = self.desktop.probe.ask("foreground")["focus"]
        return next((n for n in self.kestrel.controls if self.kestrel.control(n).handle == handle), None)

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

    def test_its_buttons_stop_and_play(self):
        self.play()
        self.desktop.picture("player-playing")
        self.click("stop")
        self.wait_loudness(lambda now: now < 0.001)
        self.desktop.picture("player-stopped")
        self.click("play")
        self.wait_loudness(lambda now: now > 0.01)

    def test_the_keyboard_stops_and_plays(self):
        self.play()
        self.tab_to("stop")
        self.desktop.key("space")
        self.wait_loudness(lambda now: now < 0.001)
        self.tab_to("play")
        self.desktop.key("space")
        self.wait_loudness(lambda now: now > 0.01)

    def test_the_volume_follows_keys_and_is_kept(self):
        self.play()
        self.tab_to("volume")
        self.desktop.key("Home")
        self.wait_loudness(lambda now: now < 0.001)
        self.desktop.key("End")
        self.wait_loudness(lambda now: now > 0.01)
        self.desktop.key(*["Left"] * 3)
        self.kestrel.quit()
        self.assertTrue(0 <= int(self.kestrel.setting("volume")) <= 10000)
        self.assertNotIn(self.kestrel.setting("volume"), ("0", "10000"))

    def test_the_volume_popup_comes_to_the_pointer_and_goes_when_clicked_away(self):
        self.kestrel.choose("Player", "Volume")
        popup = wait_for(lambda: self.kestrel.windows(class_name="volform", visible=True), "the popup")[0]
        self.assertTrue(popup.rect[0] >= 0 and popup.rect[2] <= 1024 and popup.rect[1] >= 0)
        slider = next(c for c in self.desktop.probe.children(popup) if c.class_name == "msctls_trackbar32")
        left, top, right, bottom = slider.rect
        self.desktop.press(((right + left) // 2, (top + bottom) // 2))
        self.desktop.release()
        self.desktop.picture("volume-popup")
        self.desktop.click((20, 20))
        wait_for(lambda: not self.kestrel.windows(class_name="volform", visible=True), "the popup to go")
        self.kestrel.quit()
        self.assertTrue(2000 < int(self.kestrel.setting("volume")) < 8000)

    def test_it_is_where_it_was_left_at_the_next_start(self):
        left, top, right, bottom = self.kestrel.player().rect
        self.assertEqual((200, 100), (left, top))
        self.desktop.press((left + 150, top + 8))
        for step in range(1, 6):
            self.desktop.move((left + 150 + 20 * step, top + 8 + 10 * step))
        self.desktop.release()
        # Wine's own moving goes further than the pointer on a busy machine.
        wait_for(lambda: self.kestrel.player().rect[:2] > (left, top) and self.stays(), self.kestrel.player)
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

    def test_it_hides_and_comes_back(self):
        self.click("hide")
        wait_for(lambda: not self.kestrel.player(), "it to hide")
        self.kestrel.choose("Player", "Open Window")
        wait_for(self.kestrel.player, "it to show")
        self.kestrel.choose("Player", "Open Window")
        wait_for(lambda: not self.kestrel.player(), "it to hide")

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
        self.kestrel.write_list("Jazz", [(name.encode(), f"{self.radio.url}/playlist/jazz-1.pls".encode())])
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

    def test_wheel_arrows_and_esc_work_wherever_the_pointer_is_on_it(self):
        def volume():
            return self.desktop.probe.send(self.kestrel.control("volume"), TBM_GETPOS)

        left, top, _, _ = self.kestrel.player().rect
        self.assertEqual(10000, volume())
        self.desktop.move((left + 150, top + 12))
        self.desktop.wheel(down=True, steps=2)
        self.desktop.key("Left")
        wait_for(lambda: volume() == 8500, lambda: f"three steps less; {volume()}")
        self.desktop.key("Escape")
        wait_for(lambda: not self.kestrel.player(), "it to hide")

    def test_its_corners_are_cut_away(self):
        left, top, right, bottom = self.kestrel.player().rect

        def pixel(x, y):
            return self.desktop.pixels((x, y, x + 1, y + 1))

        outside = pixel(left - 5, top - 5)
        for x, y in ((left, top), (right - 2, top), (left, bottom - 1), (right - 2, bottom - 1), (right - 1, top + 50)):
            self.assertEqual(outside, pixel(x, y), (x, y))
        for x, y in ((left, top + 50), (right - 2, top + 50), (left + 50, top), (left + 50, bottom - 1)):
            self.assertNotEqual(outside, pixel(x, y), (x, y))

    def test_its_small_form(self):
        whole = self.kestrel.player().rect
        self.click("mini")
        wait_for(lambda: self.kestrel.player().rect[3] - self.kestrel.player().rect[1] < 80, "one line")
        self.click("mini")
        wait_for(lambda: self.kestrel.player().rect == whole, "the whole window")

    def test_station_and_title_take_turns(self):
        self.play()
        for name in "station", "song", "station":
            wait_for(lambda: self.kestrel.control(name).visible, name)


class DenseScreen(Case):
    """Everything twice as large."""

    density = 192

    def test_the_window_grows_with_the_density_and_its_controls_stay_apart(self):
        self.start(playerstart=1)
        window = self.kestrel.player()
        left, top, right, bottom = window.rect
        self.assertGreater(right - left, 600)
        shown = [c for c in self.desktop.probe.children(window) if c.visible]
        for control in shown:
            self.assertTrue(left <= control.rect[0] and control.rect[2] <= right and
                            top <= control.rect[1] and control.rect[3] <= bottom, control)
        for a in shown:
            for b in shown:
                apart = (a.rect[2] <= b.rect[0] or b.rect[2] <= a.rect[0] or
                         a.rect[3] <= b.rect[1] or b.rect[3] <= a.rect[1])
                self.assertTrue(a is b or a.handle == b.handle or apart, (a, b))
        self.desktop.picture("player-200")
        self.assertEqual("Quit", self.kestrel.look().labels[-1])


if __name__ == "__main__":
    unittest.main()
