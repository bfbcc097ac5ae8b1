// For a target that works on terminals: included once, by its only source.
#pragma once

#include <fcntl.h>

#include <cstdio>
#include <cstdlib>

#include "simulator/base/fd.h"

// A system without terminals (a plain chroot) has nothing to try: 77, as CTest knows it.
extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    if (!rbk::sim::Fd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)).is_open()) {
        std::perror("posix_openpt");
        std::exit(77);
    }
    return 0;
}
