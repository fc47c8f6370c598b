#include "demo_radio/habits.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <utility>

namespace demo_radio {
namespace {

constexpr std::array<std::pair<std::string_view, Habit>, 24> kNames = {{
    {"hang", Habit::hang},
    {"hold", Habit::hold},
    {"hang-headers", Habit::hang_headers},
    {"hang-body", Habit::hang_body},
    {"slow-drip", Habit::slow_drip},
    {"reset", Habit::reset},
    {"drop", Habit::drop},
    {"stall", Habit::stall},
    {"short-body", Habit::short_body},
    {"empty", Habit::empty},
    {"garbage", Habit::garbage},
    {"not-found", Habit::not_found},
    {"server-error", Habit::server_error},
    {"html", Habit::html},
    {"no-stations", Habit::no_stations},
    {"huge", Habit::huge},
    {"redirect", Habit::redirect},
    {"redirect-loop", Habit::redirect_loop},
    {"icy", Habit::icy},
    {"icy-error", Habit::icy_error},
    {"no-burst", Habit::no_burst},
    {"burst", Habit::burst},
    {"no-type", Habit::no_type},
    {"wrong-metaint", Habit::wrong_metaint},
}};

/// "drop-3" is "drop" and 3.
std::pair<std::string_view, std::optional<int>> takeNumber(std::string_view name) {
  const std::size_t dash = name.rfind('-');
  const std::string digits(dash == std::string_view::npos ? "" : name.substr(dash + 1));
  if (digits.empty() || digits.size() > 9 ||
      !std::all_of(digits.begin(), digits.end(), [](unsigned char c) { return std::isdigit(c); }))
    return {name, std::nullopt};
  return {name.substr(0, dash), std::atoi(digits.c_str())};
}

}  // namespace

std::optional<Habits> Habits::parse(std::string_view names) {
  Habits result;
  while (!names.empty()) {
    const std::size_t comma = std::min(names.find(','), names.size());
    const auto [name, number] = takeNumber(names.substr(0, comma));
    names.remove_prefix(std::min(names.size(), comma + 1));
    if (name == "none") continue;
    const auto found = std::find_if(kNames.begin(), kNames.end(),
                                    [&n = name](const auto& entry) { return entry.first == n; });
    if (found == kNames.end()) return std::nullopt;
    result.values_[found->second] = number;
  }
  return result;
}

std::string Habits::known() {
  std::string list = "none";
  for (const auto& [name, habit] : kNames) list.append(" ").append(name);
  return list;
}

int Habits::value(Habit habit, int otherwise) const {
  const auto found = values_.find(habit);
  return found == values_.end() ? otherwise : found->second.value_or(otherwise);
}

std::optional<Asked> askedHabits(std::string_view target) {
  constexpr std::string_view kBad = "/bad/", kGood = "/good/";
  if (target.starts_with(kGood))
    return Asked{std::string(target.substr(kGood.size() - 1)), Habits()};
  if (!target.starts_with(kBad)) return Asked{std::string(target), std::nullopt};
  const std::string_view rest = target.substr(kBad.size());
  const std::size_t slash = std::min(rest.find('/'), rest.size());
  std::optional<Habits> habits = Habits::parse(rest.substr(0, slash));
  if (!habits) return std::nullopt;
  return Asked{std::string(rest.substr(slash)), std::move(habits)};
}

void HabitSwitch::set(const std::string& kind, Habits habits, int count) {
  const std::lock_guard lock(mutex_);
  entries_[kind] = {std::move(habits), count};
  ++times_[kind];
}

int HabitSwitch::times(const std::string& kind) {
  const std::lock_guard lock(mutex_);
  return times_[kind];
}

Habits HabitSwitch::take(const std::string& kind) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(kind);
  if (found == entries_.end()) return {};
  Habits habits = found->second.habits;
  if (found->second.left > 0 && --found->second.left == 0) entries_.erase(found);
  return habits;
}

}  // namespace demo_radio
