#pragma once

#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

/// A pipe whose ends are closed with it, unless they were taken out. Programs that are started do not inherit them.
struct Pipe {
    int reader = -1;
    int writer = -1;

    Pipe() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe");
        reader = ends[0];
        writer = ends[1];
    }
    ~Pipe() {
        drop(reader);
        drop(writer);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    static void drop(int& end) {
        if (end >= 0)
            close(end);
        end = -1;
    }
};
