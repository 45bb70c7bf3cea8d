// Which running copy of the program this is. A copy holds a lock on one of a hundred small files in a folder
// of the user's; the system drops the lock when the process ends, however it ends, and the number is free.
#pragma once

#include <string>

constexpr int INSTANCE_LIMIT = 100;

// Owns the number of this copy and gives it up when it goes.
class InstanceLock {
  public:
    InstanceLock() = default;
    ~InstanceLock() { release(); }
    InstanceLock(InstanceLock&& other) noexcept;
    InstanceLock& operator=(InstanceLock&& other) noexcept;
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    int number() const { return claimed_number; }
    // False if the number is not this copy's own: all are taken, or there are no locks to be had.
    bool held() const { return descriptor >= 0; }
    void release();

    friend InstanceLock claim_instance(const std::string& folder, const std::string& name);

  private:
    int claimed_number = 0;
    int descriptor = -1;
};

// The lowest free number, from 0 up. Number 0 without a lock if all are taken or if the folder, which ends in
// a separator, cannot be used; an empty folder is none.
InstanceLock claim_instance(const std::string& folder, const std::string& name);
