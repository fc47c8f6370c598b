#include <sys/ptrace.h>
#include <sys/wait.h>

#include <csignal>
#include <map>

#include "tests/directory/fixture.h"

// The program is stopped for good at each system call of a reload and of its end.
// Whatever it was doing, every file is the old or the new one.
namespace directory {
namespace {

using Files = std::map<std::string, std::string>;

// Runs `work` in a process of its own and kills that at its `last`-th stop: two for
// each system call of any of its threads, before and behind it. True when it came to
// its end instead.
template <typename Work>
bool endsBefore(int last, const Work& work) {
  const pid_t child = fork();
  if (child == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(99);
    raise(SIGSTOP);
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, WUNTRACED);
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL);
  pid_t stopped = child;  // one of the threads
  for (int stop = 0; stop < last; ++stop) {
    ptrace(PTRACE_SYSCALL, stopped, nullptr, nullptr);
    do {
      stopped = waitpid(-1, &status, __WALL);  // the end of a thread is not that of all
    } while (!WIFSTOPPED(status) && stopped != child);
    if (!WIFSTOPPED(status)) break;
  }
  if (!WIFSTOPPED(status)) {
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "tracing is not allowed here";
    return true;
  }
  kill(child, SIGKILL);
  while (waitpid(-1, &status, __WALL) != child || WIFSTOPPED(status)) {
  }
  return false;
}

class ListsKillTest : public DirectoryTest {
 protected:
  static constexpr int kReloaded = 3;

  ListsKillTest() {
    old_["\\data\\favs.dat"] = "old%#$u\r\n";
    old_["\\data\\special.dat"] = "kept%#$u\r\nover%#$v%#$20200101\r\n";
    old_["\\settings.cfg"] = "volume:7\r\n";
    std::string page;
    for (int k = 0; k < 200; ++k) page += row("New " + std::to_string(k), std::to_string(k));
    for (int i = 0; i < kReloaded; ++i) {
      old_["\\data\\" + tree_.mgenre[i].Tag + ".dat"] = std::string(3000, 'o') + "%#$u\r\n";
      transfer_.answer(page);
    }
    putOld();
    lists_.loadAtStart();
    tree_.subfavs.load() = {"new", "v"};
  }

  void putOld() const {
    for (const auto& [name, text] : old_) putFile(paths_.inData(name), text);
  }

  void reloadAndEnd() {
    for (int i = 0; i < kReloaded; ++i) (void)query_.refresh(i, Query::Mode::reload, {});
    (void)app::savesettings(paths_, settings_, tree_);
    (void)lists_.writeAtEnd();
  }

  Files now() const {
    Files all;
    for (const auto& [name, text] : old_) all[name] = fileText(paths_.inData(name));
    return all;
  }

  // How many files are new; each is wholly that or wholly the old one.
  int countNew(const Files& fresh) const {
    int count = 0;
    for (const auto& [name, text] : now()) {
      const bool is_new = text == fresh.at(name);
      EXPECT_TRUE(is_new || text == old_.at(name)) << name << " is half written";
      count += is_new ? 1 : 0;
    }
    return count;
  }

  Files old_;
};

TEST_F(ListsKillTest, AKillAtAnySystemCallLeavesOldOrNewFiles) {
  ASSERT_TRUE(endsBefore(1'000'000, [this] { reloadAndEnd(); })) << "nothing disturbs it";
  const Files fresh = now();
  for (const auto& [name, text] : old_) EXPECT_NE(fresh.at(name), text) << name;
  std::map<int, int> kills;  // by how many files were new
  bool ended = false;
  for (int stop = 1; !ended && !HasFailure(); ++stop) {
    putOld();
    ended = endsBefore(stop, [this] { reloadAndEnd(); });
    ++kills[countNew(fresh)];
  }
  EXPECT_TRUE(kills.contains(0));
  EXPECT_GT(kills.size(), old_.size() / 2) << "it was killed between files, not only at the ends";
  EXPECT_EQ(now(), fresh) << "what killed runs left behind stands in nobody's way";
  for (const auto& [name, text] : old_) {
    EXPECT_FALSE(base::fileExists(paths_.inData(name) + ".new")) << name;
  }
}

}  // namespace
}  // namespace directory
