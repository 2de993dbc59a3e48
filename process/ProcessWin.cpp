#ifdef _WIN32

#include <windows.h>

#include <QProcess>
#include <cerrno>

#include "process/CommandLine.h"
#include "process/Process.h"

namespace process {

struct Program::Impl {
  QProcess child;
  HANDLE job = nullptr;   // holds the program and all its children, so that stop() ends them together
  ~Impl() {
    if (job) CloseHandle(job);
  }
};

Program::Program() : impl_(std::make_unique<Impl>()) {}
Program::~Program() { all().removeOne(this); }

Program* Program::start(const std::vector<std::string>& arguments, std::optional<int> style, int* error) {
  std::string file;
  *error = arguments.empty() ? ENOENT : 0;
  if (*error == 0) {
    const std::string searchPath = qgetenv("PATH").toStdString();
    *error = findProgram(arguments[0], searchPath, &file);
    if (*error == ENOENT && findProgram(arguments[0] + ".exe", searchPath, &file) == 0) *error = 0;
  }
  for (const std::string& argument : arguments)
    if (*error == 0 && argument.find('\0') != std::string::npos) *error = EINVAL;
  if (*error != 0) return nullptr;

  auto* const program = new Program;
  QProcess& child = program->impl_->child;
  QStringList rest;
  for (std::size_t i = 1; i < arguments.size(); ++i) rest << QString::fromStdString(arguments[i]);
  const int show = windowStyle(style);
  child.setCreateProcessArgumentsModifier([show](QProcess::CreateProcessArguments* start) {
    start->startupInfo->dwFlags |= STARTF_USESHOWWINDOW;
    start->startupInfo->wShowWindow = WORD(show == 6 ? SW_SHOWMINNOACTIVE : show);
  });
  child.setProcessChannelMode(QProcess::MergedChannels);
  child.setStandardInputFile(QProcess::nullDevice());
  child.start(QString::fromStdString(file), rest);
  if (!child.waitForStarted()) {
    *error = EACCES;
    delete program;
    return nullptr;
  }
  all() << program;
  program->id_ = child.processId();
  program->name_ = arguments[0];
  program->impl_->job = CreateJobObjectW(nullptr, nullptr);
  if (HANDLE handle = OpenProcess(PROCESS_SET_QUOTA | PROCESS_TERMINATE, FALSE, DWORD(program->id_))) {
    AssignProcessToJobObject(program->impl_->job, handle);
    CloseHandle(handle);
  }
  connect(&child, &QProcess::readyRead, program, [program] { emit program->output(program->impl_->child.readAll()); });
  connect(&child, &QProcess::finished, program, [program](int exitCode) { program->end(exitCode); });
  return program;
}

void Program::end(int exitCode) {
  ended_ = true;
  exitCode_ = exitCode;
  emit finished(exitCode);
  deleteLater();
}

void Program::stop() {
  if (!ended_ && impl_->job) TerminateJobObject(impl_->job, 1);
}

}   // namespace process

#endif
