#include "language/output.h"

#include "bridge/compile_helper.h"
#include "bridge/convert.h"
#include "host/process_end.h"
#include "host/py_ref.h"
#include "language/evaluation.h"

namespace ling::python {

namespace {

constexpr const char* kTakeOutput = R"python(
def take_output(output):
    import codecs, io, sys

    class Output(io.RawIOBase):
        def __init__(self, stream):
            self.name = f"<{stream}>"
            self._stream = stream
            self._decode = codecs.getincrementaldecoder("utf-8")("replace").decode

        def writable(self):
            return True

        def write(self, data):
            text = self._decode(data)
            if text:
                output(text, self._stream)
            return len(data)

    for stream in ("stdout", "stderr"):
        before = getattr(sys, stream, None)
        if before is not None and not before.closed:
            before.flush()
        after = getattr(sys, f"__{stream}__")
        if output is not None:
            after = io.TextIOWrapper(Output(stream), "utf-8", "backslashreplace", "\n", write_through=True)
            after.mode = "w"
        setattr(sys, stream, after)
)python";

/// Names of modules that may have to be imported are looked up late: a program that ends has taken some away.
constexpr const char* kFinish = R"python(
def finish():
    import sys

    def tell(error, message):
        error.__traceback__ = error.__traceback__ and error.__traceback__.tb_next
        if sys.unraisablehook is not sys.__unraisablehook__:
            from types import SimpleNamespace

            details = dict(exc_type=type(error), exc_value=error, exc_traceback=error.__traceback__)
            sys.unraisablehook(SimpleNamespace(**details, err_msg=message, object=None))
        elif sys.stderr is not None:
            import traceback

            print(f"{message}:", file=sys.stderr)
            traceback.print_exception(error, file=sys.stderr)

    def wait_for_threads():
        threading = sys.modules.get("threading")
        try:
            if threading is not None:
                threading._shutdown()
        except BaseException as error:  # An interruption: the wait is over.
            tell(error, "Exception ignored on threading shutdown")

    def flush_streams():
        flushed = True
        for name in ("stdout", "stderr"):
            stream = getattr(sys, name, None)
            try:
                if stream is not None and not getattr(stream, "closed", False):
                    stream.flush()
            except BaseException as error:
                flushed = False
                if name == "stdout":
                    tell(error, "Exception ignored on flushing sys.stdout")
        return flushed

    def flush_files():
        import gc
        from _io import BufferedRandom, BufferedWriter, TextIOWrapper

        for item in gc.get_objects():
            if issubclass(type(item), (TextIOWrapper, BufferedWriter, BufferedRandom)):
                if item is not sys.stdout and item is not sys.stderr:
                    try:
                        item.flush()
                    except Exception:
                        pass  # Closed, detached or read-only: nothing of it is waiting.

    wait_for_threads()
    import atexit

    atexit._run_exitfuncs()
    flushed = flush_streams()
    flush_files()
    return flushed
)python";

/// A function of Python, kept for the process. Two threads that come first at once may both compile it: the interpreter
/// lock orders them, and the one that is kept serves for all.
class KeptFunction {
public:
    constexpr explicit KeptFunction(const char* source) noexcept : source_(source) {}

    /// What it answers to `arguments`, or an error result.
    template <class... Arguments>
    ling::Any operator()(Arguments... arguments) {
        ling::Any problem;
        if (PyObject* made = kept_ == nullptr ? compileHelper(source_, problem) : nullptr) {
            if (kept_ == nullptr)
                kept_ = made;
            else
                Py_DECREF(made);
        }
        if (kept_ == nullptr)
            return problem;
        return takeResult(PyObject_CallFunctionObjArgs(kept_, arguments..., nullptr));
    }

private:
    const char* const source_;
    PyObject* kept_ = nullptr;
};

constinit KeptFunction callTakeOutput{kTakeOutput};
constinit KeptFunction callFinish{kFinish};

}  // namespace

ling::Any takeOutput(const ling::Any& output) {
    return evaluateWith(kNoLimit, [&] {
        PyRef function = PyRef::steal(toPython(output));
        if (!function)
            return takePythonError();
        if (function.get() != Py_None && PyCallable_Check(function.get()) == 0)
            return platform::failure(u"Output goes to a function, or to none.");
        return callTakeOutput(function.get());
    });
}

ling::Any finish() {
    const ling::Any flushed = evaluateWith(kNoLimit, [] { return callFinish(); });
    if (!flushed.is(ling::Kind::Boolean))
        return flushed;
    return flushed.asBoolean() ? ling::Any() : platform::failure(u"What was printed could not be written.");
}

}  // namespace ling::python
