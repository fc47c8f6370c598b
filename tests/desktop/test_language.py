"""Language files in the running program: menus, windows, letters of every kind."""

import unittest

from case import Case
from kestrel import LANGUAGES, texts


class Language(Case):
    def names(self, table, *ids):
        return [table[str(i)] for i in ids]

    def assert_speaks(self, name):
        """Every menu has the file's texts, letter by letter."""
        table = texts(name)
        menu = self.kestrel.open_menu()
        labels = [label for label in menu.labels if label != "-"]
        self.assertEqual(self.names(table, 1002, 1026, 1041, 1033, 1034, 1035), labels)
        player = self.kestrel.hover(menu, table["1041"])
        self.assertEqual(self.names(table, 1042, 1043, 1048, 1045),
                         [label for label in player.labels if label in table.values()])
        bandwidth = self.kestrel.hover(menu, table["1026"])
        self.assertEqual(self.names(table, *range(1027, 1033)), bandwidth.labels)
        genres = self.kestrel.hover(menu, table["1002"])
        self.assertEqual(self.names(table, *range(1003, 1022), 1038, 1024, 1023),
                         [label for label in genres.labels if label != "-"])
        self.assertEqual([table["1039"]], self.kestrel.hover(genres, table["1038"]).labels)
        self.assertEqual(self.names(table, 1025, 5001), self.kestrel.hover(genres, table["1024"]).labels[:2])
        self.assertEqual([table["1022"]], self.kestrel.hover(genres, table["1009"]).labels)
        self.desktop.picture("language-" + name.split(".")[0])
        self.kestrel.close_menus()

    def test_the_menus_speak_each_language(self):
        for name in LANGUAGES:
            with self.subTest(name):
                self.start(language=name)
                self.assert_speaks(name)
                self.kestrel.kill()

    def test_splash_and_player_window_speak_it_too(self):
        german = texts("german.kesl")
        self.kestrel.write_settings(language="german.kesl", playerstart=1)
        self.kestrel.begin()
        splash = self.kestrel.wait_window("KestrelSplash")
        self.assertIn(german["0001"], [child.text for child in self.desktop.probe.children(splash)])
        self.kestrel.wait_start()
        self.assertEqual(german["6005"], self.kestrel.control("pin").text)
        self.assertEqual(german["6006"], self.kestrel.control("mini").text)

    def test_old_files_show_their_letters_and_hostile_ones_do_no_harm(self):
        self.kestrel.write_language("old.kesl", "1033:Größe & Co\n1034:-\n1035:Fin\0e\t\n1002".encode("cp1252"))
        self.start(language="old.kesl")
        menu = self.kestrel.look()
        self.assertEqual(["Größe & Co", "About", "Fin e"], [menu.labels[i] for i in (5, 7, 9)])
        self.kestrel.kill()
        self.kestrel.write_language("noise.kesl", bytes(range(256)) * 2000 + b"\n1035:" + b"x" * 100000)
        self.start(language="noise.kesl")
        self.assertEqual(0, self.kestrel.quit())


if __name__ == "__main__":
    unittest.main()
