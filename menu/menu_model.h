#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace menu {

/// One entry of a popup menu. The program keeps state in these fields: what a
/// listener sees is what the program knows.
struct MenuItem {
  std::string Caption;  ///< "-" is a separator
  std::string Tag;      ///< an address, a genre key, or "reload" / "search"
  bool Visible = true;
  bool Checked = false;
  bool Enabled = true;

  [[nodiscard]] bool isSeparator() const { return Caption == "-"; }
};

/// A control array: entries of one kind, told apart by their index. Entry 0 is
/// permanent; the others are loaded and unloaded at the high end.
class MenuArray {
 public:
  explicit MenuArray(std::vector<MenuItem> design) : items_(std::move(design)) {}

  [[nodiscard]] int UBound() const { return static_cast<int>(items_.size()) - 1; }
  [[nodiscard]] MenuItem& operator[](int index) { return items_[static_cast<std::size_t>(index)]; }
  [[nodiscard]] const MenuItem& operator[](int index) const {
    return items_[static_cast<std::size_t>(index)];
  }

  /// Appends an invisible entry with entry 0's caption and returns it.
  MenuItem& load() {
    items_.push_back({items_.front().Caption, {}, false});
    return items_.back();
  }
  /// Removes the highest entry; entry 0 stays.
  void unload() {
    if (items_.size() > 1) items_.pop_back();
  }
  /// Removes every entry above `last`, from the highest down.
  void unloadAbove(int last) { items_.resize(static_cast<std::size_t>(last) + 1); }
  void reserve(std::size_t entries) { items_.reserve(entries); }

  [[nodiscard]] auto begin() { return items_.begin(); }
  [[nodiscard]] auto end() { return items_.end(); }
  [[nodiscard]] auto begin() const { return items_.begin(); }
  [[nodiscard]] auto end() const { return items_.end(); }

 private:
  std::vector<MenuItem> items_;  // never empty
};

}  // namespace menu
