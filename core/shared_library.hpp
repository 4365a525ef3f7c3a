// SPDX-License-Identifier: MIT
#pragma once

namespace nimba {

// Owns one library that was loaded at run time; an empty one stands for the symbols that are
// already in the process.
class SharedLibrary final {
  public:
    constexpr SharedLibrary() = default;
    // `flags` are dlopen's. Empty when the library cannot be loaded.
    SharedLibrary(const char* name, int flags);
    SharedLibrary(SharedLibrary&& other) noexcept;
    // Closes the library that is replaced after the new one was loaded, so that one that is loaded
    // again is never unloaded in between.
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;
    ~SharedLibrary();

    explicit operator bool() const { return handle_ != nullptr; }

    // The function `name`, or null when it is absent.
    template <typename Function>
    [[nodiscard]] Function function(const char* name) const
    {
        return reinterpret_cast<Function>(find(name));
    }

    // Gives the library up without unloading it.
    void keep_loaded() { handle_ = nullptr; }

  private:
    [[nodiscard]] void* find(const char* name) const;

    void* handle_ = nullptr;
};

}  // namespace nimba
