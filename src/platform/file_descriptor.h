// Owner of one open file of the operating system.

#pragma once

#include <utility>

namespace sonorelle {

class CFileDescriptor {
public:
    CFileDescriptor() = default;
    explicit CFileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    ~CFileDescriptor() { Close(); }
    CFileDescriptor(CFileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    CFileDescriptor& operator=(CFileDescriptor&& other) noexcept {
        if (this != &other) {
            Close();
            descriptor_ = std::exchange(other.descriptor_, -1);
        }
        return *this;
    }

    bool IsOpen() const noexcept { return descriptor_ >= 0; }
    int Get() const noexcept { return descriptor_; }

    // False when the system reports, at the latest moment it can, that something was not written.
    bool Close() noexcept;

private:
    int descriptor_ = -1;
};

} // namespace sonorelle
