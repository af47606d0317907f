// The Windows types, constants and functions that the library uses, where Windows is not. They all
// work on the current Machine. For the arguments that the library passes, each function has the
// results and output parameters that Windows documents; other arguments it refuses, so that a wrong
// one is seen. There are no last errors: nothing in the library reads them.
//
// Local paths that begin with a drive letter and ":" or with a backslash are looked up on the
// machine's drives: "." and ".." are worked out first, the case of ASCII letters makes no
// difference, and a path of more than 259 characters, or with one that Windows refuses, is none.
// What a drive holds stays on it: links are followed where they lead to something on the same drive
// and lead nowhere otherwise. Only a regular file can be opened or copied. One that is marked
// read-only or loaded as a library is not written over; a copy has the read-only mark and the time
// of its source. Every other path is the computer's own, byte for byte, its links included, and may
// also name a character device.
//
// What differs from Windows: only ASCII letters lose their case; device names (CON, NUL), short
// names, streams ("file:stream") and blanks or dots at the end of a name mean nothing special; a
// drive's root lists "." and ".."; a path that begins with a backslash lies on C; read-only is the
// only mark, and folders have none; an open file can be written, copied onto and removed; a copy
// that fails midway leaves what is written; letters that the code page lacks become "?" and never
// similar ones.
#pragma once

#include <cstddef>
#include <cstdint>

#include "common/local_file.h"

namespace quaylink {

// The names are those that Windows gives.
// NOLINTBEGIN(readability-identifier-naming)

// Types
using BOOL = int;
using BYTE = std::uint8_t;
using DWORD = std::uint32_t;
using UINT = unsigned int;
using ULONG = std::uint32_t;
using LONG = std::int32_t;
using HRESULT = std::int32_t;
using WCHAR = char16_t;

using HANDLE = struct HandleObject*;
using HWND = void*;
using HKEY = struct RegistryKeyHandle*;
using HMODULE = struct ModuleObject*;
using FARPROC = void (*)();

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};

struct OSVERSIONINFOA {
  DWORD dwOSVersionInfoSize;
  DWORD dwMajorVersion;
  DWORD dwMinorVersion;
  DWORD dwBuildNumber;
  DWORD dwPlatformId;
  char szCSDVersion[128];
};

// The two of its members that the library looks at.
struct WIN32_FIND_DATAA {
  DWORD dwFileAttributes;
  char cFileName[260];
};

// Constants
inline constexpr UINT MAX_PATH = 260;
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;
inline constexpr LONG ERROR_SUCCESS = 0;
inline constexpr LONG ERROR_FILE_NOT_FOUND = 2;
inline constexpr LONG ERROR_ACCESS_DENIED = 5;
inline constexpr LONG ERROR_INVALID_HANDLE = 6;
inline constexpr LONG ERROR_INVALID_PARAMETER = 87;
inline constexpr LONG ERROR_MORE_DATA = 234;
inline constexpr LONG ERROR_NO_MORE_ITEMS = 259;
inline constexpr LONG ERROR_KEY_DELETED = 1018;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;
inline constexpr DWORD KEY_READ = 0x20019;
inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x01;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

inline constexpr UINT DRIVE_NO_ROOT_DIR = 1;
inline constexpr UINT DRIVE_REMOVABLE = 2;
inline constexpr UINT DRIVE_FIXED = 3;
inline constexpr UINT SEM_FAILCRITICALERRORS = 0x0001;
inline constexpr UINT SEM_NOOPENFILEERRORBOX = 0x8000;
inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;
inline constexpr int CSIDL_PERSONAL = 0x05;
inline constexpr int CSIDL_APPDATA = 0x1A;
inline constexpr int CSIDL_PROGRAM_FILES_COMMON = 0x2B;
inline constexpr int CSIDL_PROGRAM_FILES_COMMONX86 = 0x2C;

inline constexpr DWORD SHGDN_FORPARSING = 0x8000;
inline constexpr UINT STRRET_WSTR = 0;
inline constexpr UINT STRRET_OFFSET = 1;
inline constexpr UINT STRRET_CSTR = 2;

// Fixed handle values, as Windows has them: never to be dereferenced.
// NOLINTBEGIN(performance-no-int-to-ptr)
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(std::uintptr_t{0x80000002});
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});
// NOLINTEND(performance-no-int-to-ptr)

// The system
UINT SetErrorMode(UINT mode);
BOOL GetVersionExA(OSVERSIONINFOA* version);
void Sleep(DWORD milliseconds);

// Registry
LONG RegOpenKeyExA(HKEY key, const char* subkey, DWORD options, DWORD access, HKEY* result);
LONG RegEnumKeyExA(HKEY key, DWORD index, char* name, DWORD* nameLength, DWORD* reserved,
                   char* className, DWORD* classLength, FILETIME* lastWriteTime);
LONG RegQueryValueExA(HKEY key, const char* valueName, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* dataLength);
LONG RegCloseKey(HKEY key);

// Drives and files
UINT GetDriveTypeA(const char* rootPath);
// Opens the paths of devices, and no others.
HANDLE CreateFileA(const char* path, DWORD access, DWORD shareMode, void* securityAttributes,
                   DWORD disposition, DWORD flags, HANDLE templateFile);
BOOL CloseHandle(HANDLE handle);
// Looks for all entries of a drive's folder (folder\*.*), and for no other pattern.
HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* entry);
BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA* entry);
BOOL FindClose(HANDLE search);
BOOL CopyFileA(const char* source, const char* destination, BOOL failIfExists);
BOOL CreateDirectoryA(const char* path, void* securityAttributes);
DWORD GetFileAttributesA(const char* path);

// In place of the C runtime's functions, which know nothing of drives here (see windows_api.h).
LocalFile OpenLocalFile(const char* path, const char* mode);
bool RemoveLocalFile(const char* path);

// Loaded libraries and the host's program
HMODULE LoadLibraryExA(const char* path, HANDLE file, DWORD flags);
FARPROC GetProcAddress(HMODULE module, const char* name);
BOOL FreeLibrary(HMODULE module);
DWORD GetModuleFileNameA(HMODULE module, char* path, DWORD size);

// Strings and identifiers
BOOL IsDBCSLeadByte(BYTE byte);
// To the ANSI code page alone.
int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* wide, int wideLength, char* bytes,
                        int byteCapacity, const char* defaultChar, BOOL* usedDefaultChar);
HRESULT CoCreateGuid(GUID* guid);

// The shell's special folders. Each object has the operations that the library uses, and no others.
using LPITEMIDLIST = struct ITEMIDLIST*;

struct STRRET {
  UINT uType;
  union {
    WCHAR* pOleStr;       // STRRET_WSTR: the caller frees it with the shell's allocator
    UINT uOffset;         // STRRET_OFFSET: bytes from the start of the identifier list
    char cStr[MAX_PATH];  // STRRET_CSTR: the string itself
  };
};

class IMalloc {
 public:
  virtual void Free(void* memory) = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IMalloc() = default;
};

class IShellFolder {
 public:
  virtual HRESULT GetDisplayNameOf(const ITEMIDLIST* list, DWORD flags, STRRET* name) = 0;
  virtual ULONG Release() = 0;

 protected:
  ~IShellFolder() = default;
};

HRESULT SHGetSpecialFolderLocation(HWND owner, int folderId, LPITEMIDLIST* list);
HRESULT SHGetDesktopFolder(IShellFolder** desktop);
HRESULT SHGetMalloc(IMalloc** allocator);

// NOLINTEND(readability-identifier-naming)

}  // namespace quaylink
