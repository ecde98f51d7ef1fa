#include "system/RunProgram.h"

#include "Errors.h"

#include <windows.h>

namespace {

// One argument as the child's C runtime splits its command line: in quotes
// when it holds a blank or a quote, with the backslashes before a quote (or
// before the closing quote) doubled.
std::string quoted(const std::string &argument) {
  if (!argument.empty() && argument.find_first_of(" \t\"") == std::string::npos)
    return argument;
  std::string text = "\"";
  size_t backslashes = 0;
  for (const char c : argument) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    text.append(c == '"' ? backslashes * 2 + 1 : backslashes, '\\');
    backslashes = 0;
    text += c;
  }
  text.append(backslashes * 2, '\\');
  return text + "\"";
}

} // namespace

int runProgram(const std::vector<std::string> &arguments) {
  std::string line;
  for (const std::string &argument : arguments)
    line += (line.empty() ? "" : " ") + quoted(argument);
  std::vector<char> commandLine(line.begin(), line.end());
  commandLine.push_back('\0');
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                      &startup, &process))
    throw SetupError("cannot run " + arguments[0] + " (error " + std::to_string(GetLastError()) +
                     ")");
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return static_cast<int>(code);
}
