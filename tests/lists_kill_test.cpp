#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <map>

#include "tests/directory_fixture.h"

// The program is stopped for good at each system call of a reload and of its end, and
// in the middle of what it writes. Whatever it was doing, every file is the old or the
// new one.
namespace directory {
namespace {

using Files = std::map<std::string, std::string>;

int exitOf(pid_t child) {
  int status = 0;
  waitpid(child, &status, WUNTRACED);
  return status;
}

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
  int status = exitOf(child);
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
    for (int i = 0; i < kReloaded; ++i) old_[cache(i)] = std::string(3000, 'o') + "%#$u\r\n";
    for (const auto& [name, text] : old_) putOld(name, text);
    lists_.loadAtStart();
    tree_.subfavs.load() = {"new", "v"};
    for (int i = 0; i < kReloaded; ++i) {
      std::string page;
      for (int k = 0; k < 200; ++k) page += row("New " + std::to_string(k), std::to_string(k));
      transfer_.answer(page);
    }
  }

  std::string cache(int genre) const { return "\\data\\" + tree_.mgenre[genre].Tag + ".dat"; }

  // Straight into the file: what a killed process left beside it stays there.
  void putOld(const std::string& name, const std::string& text) {
    std::string path = paths_.inData(name);
    std::replace(path.begin(), path.end(), '\\', '/');
    std::ofstream(path, std::ios::binary) << text;
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

  // A run that nothing disturbs; its files.
  Files undisturbed() {
    EXPECT_TRUE(endsBefore(1'000'000, [this] { reloadAndEnd(); }));
    const Files files = now();
    for (const auto& [name, text] : old_) EXPECT_NE(files.at(name), text) << name;
    return files;
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

  bool anythingBeside() const {
    for (const auto& [name, text] : old_) {
      if (app::fileExists(paths_.inData(name) + ".new")) return true;
    }
    return false;
  }

  Files old_;
};

TEST_F(ListsKillTest, AKillAtAnySystemCallLeavesOldOrNewFiles) {
  const Files fresh = undisturbed();
  std::map<int, int> kills;  // by how many files were new
  bool ended = false;
  for (int stop = 1; !ended && !HasFailure(); ++stop) {
    for (const auto& [name, text] : old_) putOld(name, text);
    ended = endsBefore(stop, [this] { reloadAndEnd(); });
    ++kills[countNew(fresh)];
  }
  EXPECT_TRUE(kills.contains(0));
  EXPECT_GT(kills.size(), old_.size() / 2) << "it was killed between files, not only at the ends";
  EXPECT_EQ(now(), fresh) << "what killed runs left behind stands in nobody's way";
  EXPECT_FALSE(anythingBeside());
}

// The system ends a process at the byte where a file becomes too large.
TEST_F(ListsKillTest, AnEndInTheMiddleOfAFileOrAFullDiskLeavesOldOrNewFiles) {
  const Files fresh = undisturbed();
  for (const bool killed : {true, false}) {
    for (const rlim_t bytes : {0, 1, 8, 9, 10, 20, 4095, 4096, 4097, 10'000, 1'000'000}) {
      for (const auto& [name, text] : old_) putOld(name, text);
      const pid_t child = fork();
      if (child == 0) {
        const rlimit limit{bytes, bytes};
        const rlimit no_core{0, 0};
        setrlimit(RLIMIT_CORE, &no_core);
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, killed ? SIG_DFL : SIG_IGN);
        reloadAndEnd();
        _exit(0);
      }
      const int status = exitOf(child);
      const int files_now = countNew(fresh);
      if (bytes == 1'000'000) {
        EXPECT_EQ(files_now, static_cast<int>(old_.size()));
      } else if (killed) {
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGXFSZ) << bytes;
      } else {
        EXPECT_TRUE(WIFEXITED(status)) << bytes;
        EXPECT_LT(files_now, static_cast<int>(old_.size())) << bytes;
        EXPECT_FALSE(anythingBeside()) << bytes;
      }
    }
  }
}

}  // namespace
}  // namespace directory
