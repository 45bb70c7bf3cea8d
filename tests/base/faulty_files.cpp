#include "tests/base/faulty_files.h"

#include <unistd.h>

#include <cerrno>

#include "base/file_calls.h"

FaultPlan fault_plan;

namespace {

bool next_is_faulty(const char* name) {
    fault_plan.trace.push_back(name);
    return fault_plan.calls++ == fault_plan.at_call;
}

template <typename Call>
auto with_fault(const char* name, Call call) -> decltype(call()) {
    if (!next_is_faulty(name)) return call();
    switch (fault_plan.fault) {
        case Fault::FAIL:
            errno = EIO;
            return -1;
        case Fault::CRASH_BEFORE:
            _exit(CRASH_STATUS);
        case Fault::CRASH_AFTER:
            call();
            _exit(CRASH_STATUS);
        default:
            return call();
    }
}

int faulty_open(const char* path, int flags, mode_t mode) {
    return with_fault("open", [&] { return system_file_calls().open(path, flags, mode); });
}

ssize_t faulty_write(int descriptor, const void* data, size_t bytes) {
    const auto write_some = [&](size_t count) { return system_file_calls().write(descriptor, data, count); };
    const bool here = fault_plan.calls == fault_plan.at_call;
    if (here && fault_plan.fault == Fault::CRASH_MIDWAY) {
        write_some(bytes / 2);
        _exit(CRASH_STATUS);
    }
    if (here && fault_plan.fault == Fault::SHORT_WRITE) {
        next_is_faulty("write");
        fault_plan.fault = Fault::FAIL;
        ++fault_plan.at_call;  // the disk is full: the rest fails
        return write_some(bytes / 2);
    }
    return with_fault("write", [&] { return write_some(bytes); });
}

int faulty_flush(int descriptor) {
    return with_fault("flush", [&] { return system_file_calls().flush(descriptor); });
}

int faulty_close(int descriptor) {
    // A descriptor is gone even when its closing reports an error.
    return with_fault("close", [&] { return system_file_calls().close(descriptor); });
}

int faulty_rename(const char* from, const char* to) {
    return with_fault("rename", [&] { return system_file_calls().rename(from, to); });
}

int faulty_remove(const char* path) {
    return with_fault("remove", [&] { return system_file_calls().remove(path); });
}

ssize_t faulty_read(int descriptor, void* data, size_t bytes) {
    return with_fault("read", [&] { return system_file_calls().read(descriptor, data, bytes); });
}

off_t faulty_seek(int descriptor, off_t offset, int from) {
    return with_fault("seek", [&] { return system_file_calls().seek(descriptor, offset, from); });
}

}  // namespace

FaultyFiles::FaultyFiles(Fault fault, int at_call) {
    fault_plan = FaultPlan{fault, at_call, 0, {}};
    file_calls = {faulty_open,   faulty_write,  faulty_flush, faulty_close,
                  faulty_rename, faulty_remove, faulty_read,  faulty_seek};
}

FaultyFiles::~FaultyFiles() { file_calls = system_file_calls(); }
