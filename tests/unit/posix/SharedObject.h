#pragma once

#include <cstddef>
#include <fcntl.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace halvo::test {

/// A real shared-memory object with a name of this test process's own; removed at the end.
class SharedObject {
  public:
    explicit SharedObject(std::size_t size, int mode = 0600)
        : name_("/halvo_test_" + std::to_string(::getpid()) + "_" + std::to_string(count_++)),
          descriptor_(
              ::shm_open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL, static_cast<mode_t>(mode))) {
        (void)resize(size);
    }
    /// Only a name; nothing exists yet.
    SharedObject()
        : name_("/halvo_test_" + std::to_string(::getpid()) + "_" + std::to_string(count_++)) {}
    ~SharedObject() {
        if (descriptor_ >= 0) ::close(descriptor_);
        unlink();
    }
    SharedObject(const SharedObject&) = delete;
    SharedObject& operator=(const SharedObject&) = delete;

    const std::string& name() const { return name_; }
    int descriptor() const { return descriptor_; }
    bool resize(std::size_t size) const {
        return ::ftruncate(descriptor_, static_cast<off_t>(size)) == 0;
    }
    /// Removes the object in a process that will not run the destructor.
    void unlink() const { (void)::shm_unlink(name_.c_str()); }
    void* map(std::size_t size) const {
        return ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0);
    }

  private:
    static inline int count_ = 0;
    std::string name_;
    int descriptor_ = -1;
};

} // namespace halvo::test
