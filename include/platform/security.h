#ifndef QNLIB_PLATFORM_SECURITY_H
#define QNLIB_PLATFORM_SECURITY_H

#include "lib_api.h"
#include "platform/kernel.h"
#include "platform/types.h"

// Security descriptors, SIDs and access control lists as plain data in the platform's layout, and labels of
// named objects. Included through lib_platform.h only.
//
// What these make is data: of all that a descriptor can say, Linux enforces what CreateEventW and
// CreateMutexW tell of it in platform/kernel.h, and refuses the rest there. A null pointer to a structure
// fails with 87. Success leaves the last error alone. Any thread may call these; one structure is one
// thread's at a time while it is changed.

/// The kinds of objects that SetNamedSecurityInfoW can be asked for.
enum _SE_OBJECT_TYPE : int
{
    SE_UNKNOWN_OBJECT_TYPE = 0,
    SE_FILE_OBJECT,
    SE_SERVICE,
    SE_PRINTER,
    SE_REGISTRY_KEY,
    SE_LMSHARE,
    SE_KERNEL_OBJECT,
    SE_WINDOW_OBJECT,
    SE_DS_OBJECT,
    SE_DS_OBJECT_ALL,
    SE_PROVIDER_DEFINED_OBJECT,
    SE_WMIGUID_OBJECT,
    SE_REGISTRY_WOW64_32KEY
};

namespace qn_platform
{

using SE_OBJECT_TYPE = ::_SE_OBJECT_TYPE;
using SECURITY_INFORMATION = DWORD;
using SECURITY_DESCRIPTOR_CONTROL = WORD;
using PSECURITY_DESCRIPTOR = PVOID;
using PSID = PVOID;

struct SID_IDENTIFIER_AUTHORITY
{
    BYTE Value[6]; // the most significant byte first
};
using PSID_IDENTIFIER_AUTHORITY = SID_IDENTIFIER_AUTHORITY*;

struct SID
{
    BYTE Revision;
    BYTE SubAuthorityCount;
    SID_IDENTIFIER_AUTHORITY IdentifierAuthority;
    DWORD SubAuthority[1]; // as many as SubAuthorityCount says
};

struct ACL
{
    BYTE AclRevision;
    BYTE Sbz1;
    WORD AclSize; // of header, entries and the room behind them
    WORD AceCount;
    WORD Sbz2;
};
using PACL = ACL*;

struct ACE_HEADER
{
    BYTE AceType;
    BYTE AceFlags;
    WORD AceSize;
};

struct SYSTEM_MANDATORY_LABEL_ACE
{
    ACE_HEADER Header;
    DWORD Mask;
    DWORD SidStart; // the SID begins here
};

/// The absolute form: its parts lie elsewhere.
struct SECURITY_DESCRIPTOR
{
    BYTE Revision;
    BYTE Sbz1;
    SECURITY_DESCRIPTOR_CONTROL Control;
    PSID Owner;
    PSID Group;
    PACL Sacl;
    PACL Dacl;
};

/// The self-relative form: one block, its parts at these distances from its begin, 0 for none.
struct SECURITY_DESCRIPTOR_RELATIVE
{
    BYTE Revision;
    BYTE Sbz1;
    SECURITY_DESCRIPTOR_CONTROL Control;
    DWORD Owner;
    DWORD Group;
    DWORD Sacl;
    DWORD Dacl;
};

inline constexpr DWORD SECURITY_DESCRIPTOR_REVISION = 1;
inline constexpr SECURITY_DESCRIPTOR_CONTROL SE_OWNER_DEFAULTED = 0x0001;
inline constexpr SECURITY_DESCRIPTOR_CONTROL SE_GROUP_DEFAULTED = 0x0002;
inline constexpr SECURITY_DESCRIPTOR_CONTROL SE_DACL_PRESENT = 0x0004;
inline constexpr SECURITY_DESCRIPTOR_CONTROL SE_DACL_DEFAULTED = 0x0008;
inline constexpr SECURITY_DESCRIPTOR_CONTROL SE_SACL_PRESENT = 0x0010;
inline constexpr SECURITY_DESCRIPTOR_CONTROL SE_SACL_DEFAULTED = 0x0020;
inline constexpr SECURITY_DESCRIPTOR_CONTROL SE_SELF_RELATIVE = 0x8000;

inline constexpr BYTE SID_REVISION = 1;
inline constexpr BYTE SID_MAX_SUB_AUTHORITIES = 15;
inline constexpr DWORD ACL_REVISION = 2;
inline constexpr DWORD MIN_ACL_REVISION = 2;
inline constexpr DWORD MAX_ACL_REVISION = 4;
inline constexpr BYTE SYSTEM_MANDATORY_LABEL_ACE_TYPE = 0x11;
inline constexpr DWORD VALID_INHERIT_FLAGS = 0x1F;

inline constexpr DWORD SYSTEM_MANDATORY_LABEL_NO_WRITE_UP = 1;
inline constexpr DWORD SYSTEM_MANDATORY_LABEL_NO_READ_UP = 2;
inline constexpr DWORD SYSTEM_MANDATORY_LABEL_NO_EXECUTE_UP = 4;
inline constexpr DWORD SECURITY_MANDATORY_LOW_RID = 0x1000;
inline constexpr DWORD SECURITY_MANDATORY_MEDIUM_RID = 0x2000;

inline constexpr SECURITY_INFORMATION OWNER_SECURITY_INFORMATION = 0x01;
inline constexpr SECURITY_INFORMATION GROUP_SECURITY_INFORMATION = 0x02;
inline constexpr SECURITY_INFORMATION DACL_SECURITY_INFORMATION = 0x04;
inline constexpr SECURITY_INFORMATION SACL_SECURITY_INFORMATION = 0x08;
inline constexpr SECURITY_INFORMATION LABEL_SECURITY_INFORMATION = 0x10;

/// Makes an empty descriptor in absolute form: no owner, no group, no lists. 1305 for another revision
/// than 1.
LIB_API BOOL InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision);

/// Puts a DACL into a descriptor of absolute form, or, if `present` is 0, marks that it has none: then the
/// other two are ignored, and what they set before stays. A present null DACL lets everybody in. The list
/// stays the caller's and must outlive the descriptor. 1305 for a descriptor that is not of revision 1, 1338
/// for one in self-relative form.
LIB_API BOOL SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL dacl,
                                       BOOL defaulted);

/// What SetSecurityDescriptorDacl put in, of descriptors in either form. Without a DACL only `present` is
/// written. 1305 for a descriptor that is not of revision 1.
LIB_API BOOL GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, LPBOOL present, PACL* dacl,
                                       LPBOOL defaulted);

/// Whether a descriptor is of revision 1 and what it points to is valid. Leaves 1305 or 1338 if it isn't.
LIB_API BOOL IsValidSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor);

/// Makes a SID of 0 to 8 sub-authorities (more: 1337) that the caller gives back to FreeSid. 8 when memory is
/// short.
LIB_API BOOL AllocateAndInitializeSid(PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD sub_authority_0,
                                      DWORD sub_authority_1, DWORD sub_authority_2, DWORD sub_authority_3,
                                      DWORD sub_authority_4, DWORD sub_authority_5, DWORD sub_authority_6,
                                      DWORD sub_authority_7, PSID* sid);

/// Releases a SID of AllocateAndInitializeSid; null is accepted. The answer is null.
LIB_API PVOID FreeSid(PSID sid);

/// The size of a SID in bytes. 0 with the last error 1337 for one that is not valid.
LIB_API DWORD GetLengthSid(PSID sid);

/// Whether the revision is 1 and there are no more than 15 sub-authorities. Leaves the last error alone.
LIB_API BOOL IsValidSid(PSID sid);

/// Makes a block of `size` bytes an empty list. 122 for less than the header, 87 for more than 65,535 and for
/// a revision that is not 2 to 4.
LIB_API BOOL InitializeAcl(PACL acl, DWORD size, DWORD revision);

/// Whether the revision is 2 to 4 and the entries fit into the size. Leaves the last error alone.
LIB_API BOOL IsValidAcl(PACL acl);

/// Sets security information of a named object; the answer is 0 or the reason. There is no integrity level
/// on Linux: no process runs below another one's level, so a label would keep nobody out and let nobody in,
/// and owners and lists of names have no counterpart either. So this never succeeds; it tells why:
///
/// - 2: no event or mutex of that name (SE_KERNEL_OBJECT), no such file (SE_FILE_OBJECT); 3 for a file in a
///   folder that isn't there; 5 when the caller may not look
/// - 87: a null or empty name, no or unknown information, SE_UNKNOWN_OBJECT_TYPE or a type that is none
/// - 1336, 1337: a list or an owner that is to be set is not valid; 8 when memory is short
/// - 50: all is well, and it cannot be expressed; also for every other type of object
///
/// Backslashes of a file's name count as slashes. The last error is left alone.
LIB_API DWORD SetNamedSecurityInfoW(LPWSTR name, SE_OBJECT_TYPE type, SECURITY_INFORMATION information,
                                    PSID owner, PSID group, PACL dacl, PACL sacl);

} // namespace qn_platform

#endif
