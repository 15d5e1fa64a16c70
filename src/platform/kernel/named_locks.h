#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_LOCKS_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_LOCKS_H

// The two locks on the file of a named object. They belong to the open file, which lives as long as a
// descriptor or a mapping of it does: so a mapping alone keeps a lock, and a killed process loses it.
//
// The door (byte 0) is held shortly by whoever joins an object or leaves it. The sign of life (a byte for
// each process, by its number) is held by everyone who uses it.

namespace qn_platform::kernel
{

/// An open descriptor, closed at the end.
class File
{
public:
    explicit File(int file) : m_nFile(file) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File();

    int get() const { return m_nFile; }
    bool Is_Open() const { return m_nFile >= 0; }

private:
    int m_nFile;
};

/// Tries for about so long: whoever may open a file can also hold its door for ever.
bool Lock_Door(const File& file, int milliseconds);
void Unlock_Door(const File& file);

/// The door of a file that nobody uses and nobody is at, by one call. False when either is the case.
bool Lock_Unused(const File& file);

bool Show_Life(const File& file);
bool Is_Used(const File& file);
bool Is_Used_By_Others(const File& file);

} // namespace qn_platform::kernel

#endif
