/// The yardstick: an isolated interpreter without `ling`, configured and with the search paths as the plug-in has them.
///
///     bare_host EXTENSIONS eval EXPRESSION     prints the value
///     bare_host EXTENSIONS import FILE         imports each module that the file names, one a line

#include <Python.h>

#include <cstdio>
#include <string>
#include <string_view>

namespace {

constexpr const char* kImports =
    "import importlib\n"
    "for name in open(file).read().split():\n"
    "    try:\n"
    "        importlib.import_module(name)\n"
    "    except BaseException:\n"
    "        pass\n";

bool start(const std::string& extensions) {
    PyConfig config;
    PyConfig_InitIsolatedConfig(&config);
    (void)PyConfig_SetString(&config, &config.filesystem_encoding, L"utf-8");
    config.site_import = 0;
    config.write_bytecode = 0;
    config.pathconfig_warnings = 0;
    config._init_main = 0;
    (void)Py_InitializeFromConfig(&config);
    config._init_main = 1;
    config.module_search_paths_set = 1;
    for (const char* part : {"/site-packages", "/python3/lib/python313.zip"}) {
        const std::string path = extensions + part;
        (void)PyWideStringList_Append(&config.module_search_paths, std::wstring(path.begin(), path.end()).c_str());
    }
    const PyStatus status = Py_InitializeFromConfig(&config);
    PyConfig_Clear(&config);
    return PyStatus_Exception(status) == 0;
}

/// Runs `code` with `file` bound. Prints the value of an expression.
bool run(const char* code, int kind, const char* file) {
    PyObject* names = Py_BuildValue("{s:O,s:s}", "__builtins__", PyEval_GetBuiltins(), "file", file);
    PyObject* value = PyRun_String(code, kind, names, names);
    PyObject* text = value == nullptr ? nullptr : PyObject_Str(value);
    if (text == nullptr) {
        PyErr_Print();
        return false;
    }
    if (kind == Py_eval_input)
        std::puts(PyUnicode_AsUTF8(text));
    return true;
}

}  // namespace

int main(int count, char** texts) {
    if (count != 4 || !start(texts[1]))
        return 1;
    const bool evaluates = std::string_view(texts[2]) == "eval";
    return run(evaluates ? texts[3] : kImports, evaluates ? Py_eval_input : Py_file_input, texts[3]) ? 0 : 1;
}
