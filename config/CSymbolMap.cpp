#include <qvnrt/CSymbolMap.h>

#include <cstdlib>
#include <string>

#include "config/CQvnRTApp.h"
#include "config/Strings.h"
#include "platform/UiHost.h"
#include "platform/ModuleFile.h"

CSymbolMap appSymbolMap;

namespace {

// Private causes of the map file's exceptions; each names its message.
constexpr int kBadVersion = 121;
constexpr int kUnknownProvider = 122;
constexpr int kFileProblem = 123;

constexpr int kMajorVersion = 1;
constexpr int kMinorVersion = 0;

// The first word of a provider's name; a blank at position 0 counts as no blank.
CString FirstWord(const CString& name) {
    const int blank = name.Find(' ');
    return blank > 0 ? name.Left(blank) : name;
}

void ShowFileMessage(int cause) {
    const unsigned id = (cause == kBadVersion || cause == kUnknownProvider)
                            ? static_cast<unsigned>(cause)
                            : static_cast<unsigned>(kFileProblem);
    qvnrt::ShowMessage(id, qvnrt::MB_ICONERROR);
}

}  // namespace

CSymbolMap::CSymbolMap() : m_mode(0) {}

CSymbolMap::~CSymbolMap() = default;

void CSymbolMap::SetMode(unsigned int flags) { m_mode = flags; }

const CString& CSymbolMap::Translate(const CMapStringToString& map, const CString& symbol,
                                     int* found) {
    m_work = symbol;
    m_work.MakeUpper();
    const bool known = map.Lookup(m_work, m_result);
    if (!known) m_result = symbol;  // unchanged, in the case the caller used
    if (found) *found = known ? 1 : 0;
    return m_result;
}

const char* CSymbolMap::RT2DL(char* symbol, int* found) {
    return Translate(m_RT2DL, symbol, found);
}

const CString& CSymbolMap::RT2DL(CString symbol, int* found) {
    return Translate(m_RT2DL, symbol, found);
}

const char* CSymbolMap::DL2RT(char* symbol, int* found) {
    return Translate(m_DL2RT, symbol, found);
}

const CString& CSymbolMap::DL2RT(CString symbol, int* found) {
    return Translate(m_DL2RT, symbol, found);
}

void CSymbolMap::SetAt(CString rt, CString dl) {
    m_RT2DL[rt] = dl;
    m_DL2RT[dl] = rt;
}

POSITION CSymbolMap::GetStartPosition() const { return m_RT2DL.GetStartPosition(); }

void CSymbolMap::GetNextAssoc(POSITION& position, CString& rt, CString& dl) {
    m_RT2DL.GetNextAssoc(position, rt, dl);
}

void CSymbolMap::RemoveAll() {
    m_RT2DL.RemoveAll();
    m_DL2RT.RemoveAll();
}

void CSymbolMap::Clear() {
    RemoveAll();
    m_strUnused.Empty();
    m_path.Empty();
    m_provider1.Empty();
    m_provider2.Empty();
    m_result.Empty();
    m_work.Empty();
    SetFilePath("");
}

int CSymbolMap::LoadMap(CString& directory, CString& provider1, CString& provider2, int merge) {
    return LoadMap(directory.GetBuffer(0), provider1.GetBuffer(0), provider2.GetBuffer(0), merge);
}

int CSymbolMap::LoadMap(char* directory, char* provider1, char* provider2, int merge) {
    if (directory && *directory) m_path = directory;
    if (m_path.IsEmpty()) {
        // The directory of the application's module, up to and including its last '/'.
        const std::string module = qvnrt::platform::ModuleFileName(qvnrt::AppNameBuffer());
        const size_t slash = module.rfind('/');
        m_path = slash == std::string::npos ? CString() : CString(module.substr(0, slash + 1));
    }
    if (m_path.IsEmpty() || !provider1 || !*provider1 || !provider2 || !*provider2) return 0;
    m_provider1 = provider1;
    m_provider2 = provider2;
    MakePath();
    SetFilePath(m_path);
    return ReadMap(merge);
}

// Appends whether or not m_path already ends with a separator, and to whatever m_path holds,
// so a second load with an empty directory appends a second file name. Kept: callers pass
// the directory again or call Clear first.
int CSymbolMap::MakePath() {
    m_path += "/";
    m_path += FirstWord(m_provider1);
    m_path += "_";
    m_path += FirstWord(m_provider2);
    m_path += ".smd";
    return 1;
}

int CSymbolMap::ReadMap(int merge) {
    if (IsOpen()) Abort();
    try {
        CFileException openError;
        if (!Open(m_path, m_mode, &openError)) throw openError;
        CString line;
        // Line 1: "<major>.<minor>", major 1; the minor number is read and ignored.
        if (!ReadString(line)) throw CFileException(kBadVersion);
        const int dot = line.Find('.');
        if (dot <= 0 || std::atoi(line.Left(dot)) != kMajorVersion) {
            throw CFileException(kBadVersion);
        }
        // Line 2: the two providers, comma-separated; passed over when the file ends first.
        if (ReadString(line)) {
            const int comma = line.Find(',');
            if (comma <= 0) throw CFileException(kBadVersion);
            CString first = line.Left(comma);
            CString second = line.Mid(comma + 1);
            if (first.Trim() != m_provider1 || second.Trim() != m_provider2) {
                throw CFileException(kUnknownProvider);
            }
        }
        if (!merge) RemoveAll();  // only now: a bad header leaves the old pairs
        while (ReadString(line)) {
            const int comma = line.Find(',');
            if (comma <= 0) continue;
            // A symbol ends at a NUL byte, as every reader of the map sees it (lookups, and
            // WriteMap, which would otherwise end the line there and run the next pair in).
            CString rt(static_cast<const char*>(line.Left(comma)));
            CString dl(static_cast<const char*>(line.Mid(comma + 1)));
            rt.Trim().MakeUpper();
            dl.Trim().MakeUpper();
            if (rt.IsEmpty() || dl.IsEmpty()) continue;
            m_RT2DL[rt] = dl;
            m_DL2RT[dl] = rt;
        }
        Close();
        return 1;
    } catch (const CFileException& error) {
        ShowFileMessage(error.m_cause);
        Abort();
        return 0;
    }
}

int CSymbolMap::WriteMap() {
    if (IsOpen()) Abort();
    if (!Open(m_path, m_mode)) return 0;
    try {
        CString line;
        line.Format("%i.%i\n", kMajorVersion, kMinorVersion);
        WriteString(line);
        WriteString(m_provider1 + "," + m_provider2 + "\n");
        CString rt, dl;
        for (POSITION at = m_RT2DL.GetStartPosition(); at;) {
            m_RT2DL.GetNextAssoc(at, rt, dl);
            WriteString(rt.Trim() + "," + dl.Trim() + "\n");
        }
        Close();
        return 1;
    } catch (const CFileException&) {
        qvnrt::ShowMessage(kFileProblem, qvnrt::MB_ICONERROR);  // whatever the cause
        Abort();
        return 0;
    } catch (...) {
        Abort();
        return 0;
    }
}
