// The real save code in a process of its own, to be traced and killed:
//   save_probe TARGET NEW-TEXT-FILE
// Saves the content of the second file to the first, expecting it as it is. Prints the outcome; exits with 1 when refused.
//   save_probe TARGET
// Looks for what killed saves left of it, as opening it does, and prints a line for each copy that came back whole.
#include <sys/stat.h>

#include <cstdio>

#include "text/file/FileIo.h"
#include "text/journal/JournalRead.h"

int main(int argc, char** argv) {
  if (argc == 2) {
    for (const auto& left : text::leftCopies({argv[1]}))
      if (const auto found = left.recover(); found.error.empty()) std::printf("%s\n", left.name().c_str());
    return 0;
  }
  if (argc != 3) return 2;
  const auto fresh = text::loadFile(argv[2]);
  if (!fresh.error.empty()) return 2;
  const auto expected = text::stampOf(argv[1], true);
  struct stat mark {};
  ::stat("/the-save-begins-here", &mark);   // seen in the trace
  const auto result = text::saveFile(argv[1], fresh.text, {fresh.format, expected});
  ::stat("/the-save-ends-here", &mark);
  std::printf("%s\n", result.ok() ? "saved" : result.error.c_str());
  return result.ok() ? 0 : 1;
}
