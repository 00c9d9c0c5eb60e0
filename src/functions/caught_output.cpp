#include "functions/caught_output.h"

#include "host/error_scope.h"
#include "host/names.h"

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ling::python {

namespace names {

inline constinit const Name closed{"closed"};
inline constinit const Name flush{"flush"};

}  // namespace names

namespace {

constexpr const char* kStreams[] = {"stdin", "stdout", "stderr"};
constexpr const char* kWriters[] = {"stdout", "stderr", "__stdout__", "__stderr__"};
constexpr std::array<int, 2> kDescriptors = {STDOUT_FILENO, STDERR_FILENO};
constexpr std::size_t kLongestText = 1000;

/// What was written so far leaves the buffers of all who write, so that it goes where it was meant to go.
void flushAll() {
    for (const char* name : kWriters) {
        PyRef stream = PyRef::borrow(PySys_GetObject(name));
        if (!stream || stream.get() == Py_None)
            continue;
        PyRef done = PyRef::steal(PyObject_CallMethodNoArgs(stream.get(), names::flush.object()));
        forgetError();
    }
    (void)std::fflush(stdout);
    (void)std::fflush(stderr);
}

/// A stream on a descriptor that stays open whatever becomes of the stream. None where there is no such descriptor.
PyRef writerOn(int descriptor, const char* name) {
    PyRef stream = PyRef::steal(PyFile_FromFd(descriptor, name, "w", 1, "utf-8", "backslashreplace", nullptr, 0));
    forgetError();
    return stream ? stream : PyRef::borrow(Py_None);
}

PyRef emptyReader() {
    const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
    PyRef stream = PyRef::steal(
        descriptor < 0 ? nullptr : PyFile_FromFd(descriptor, "<stdin>", "r", -1, "utf-8", nullptr, nullptr, 1));
    forgetError();
    return stream ? stream : PyRef::borrow(Py_None);
}

PyRef openStream(std::size_t index) {
    return index == 0 ? emptyReader() : writerOn(kDescriptors[index - 1], index == 1 ? "<stdout>" : "<stderr>");
}

/// Not closed, and not detached, which makes the question itself an error. None counts as open: it is what stands for
/// a stream that cannot be had.
bool isOpen(PyObject* stream) {
    if (stream == nullptr || stream == Py_None)
        return stream != nullptr;
    PyRef closed = PyRef::steal(attribute(stream, names::closed));
    forgetError();
    return closed.get() == Py_False;
}

void setStream(const char* name, PyObject* stream) {
    (void)PySys_SetObject(name, stream);
    forgetError();
}

}  // namespace

CaughtOutput::CaughtOutput() : file_(memfd_create("output", MFD_CLOEXEC)) {
    const ErrorScope scope;
    flushAll();
    if (file_ < 0)
        return;
    (void)fcntl(file_, F_SETFL, O_APPEND);  // It is cut short while others write to it.
    for (std::size_t i = 0; i < saved_.size(); ++i) {
        saved_[i] = fcntl(kDescriptors[i], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        if (saved_[i] >= 0)
            (void)dup2(file_, kDescriptors[i]);
    }
    for (std::size_t i = 0; i < streams_.size(); ++i)
        streams_[i] = PyRef::borrow(PySys_GetObject(kStreams[i]));
    ensureStreams();
}

CaughtOutput::~CaughtOutput() {
    const ErrorScope scope;
    if (file_ < 0)
        return;
    flushAll();
    for (std::size_t i = 0; i < saved_.size(); ++i) {
        if (saved_[i] < 0)
            continue;
        (void)dup2(saved_[i], kDescriptors[i]);
        (void)close(saved_[i]);
    }
    (void)close(file_);
    restoreStreams();
}

void CaughtOutput::ensureStreams() {
    for (std::size_t i = 0; i < replaced_.size(); ++i) {
        if (!isOpen(replaced_[i].get()))
            replaced_[i] = openStream(i);
        if (PySys_GetObject(kStreams[i]) != replaced_[i].get())
            setStream(kStreams[i], replaced_[i].get());
    }
}

/// A stream that was missing from `sys` is missing again.
void CaughtOutput::restoreStreams() {
    for (std::size_t i = 0; i < streams_.size(); ++i)
        setStream(kStreams[i], streams_[i].get());
}

ling::String CaughtOutput::take() {
    const ErrorScope scope;
    if (file_ < 0)
        return {};
    flushAll();
    ensureStreams();
    std::string text(kLongestText, '\0');
    const ssize_t size = pread(file_, text.data(), text.size(), 0);
    if (size <= 0 || ftruncate(file_, 0) != 0)
        return {};
    text.resize(static_cast<std::size_t>(size));
    return ling::String(text).trimmed();
}

}  // namespace ling::python
