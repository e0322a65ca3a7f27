#include <qvnrt/CPrivateProfile.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "platform/Directories.h"
#include "platform/FileStreams.h"
#include "platform/Registry.h"

namespace {

constexpr const char* kDefaultSection = "<!!!! - Default - !!!!>";
constexpr const char* kRegistryKey = "Software\\Quorvane\\RealTime";
constexpr const char* kLastPathValue = "Last Private Profile";
// The Windows build read the value into a MAX_PATH buffer.
constexpr size_t kLastPathBufferSize = 260;
constexpr const char* kCommentMarker = "// ";
constexpr const char* kTempSuffix = ".tmp";
constexpr int kKeyMapBlockSize = 10;
// CString counts in int; a larger file is no profile.
constexpr unsigned long long kMaxFileSize = INT_MAX;

// atoi's reading, without its undefined behaviour on overflow: out-of-range numbers clamp.
int ToInt(const char* text) {
    const long value = std::strtol(text, nullptr, 10);
    if (value > INT_MAX) return INT_MAX;
    if (value < INT_MIN) return INT_MIN;
    return static_cast<int>(value);
}

bool IsLineBreak(char c) { return c == '\n' || c == '\r' || c == '\0'; }

// Throws CFileException when the buffered text cannot be put on the disk. Flushing here,
// before the temporary file replaces anything, is what keeps a short write (a full disk,
// RLIMIT_FSIZE) from taking the place of a good file.
void FlushToDisk(CStdioFile& file) {
    if (const int error = qvnrt::platform::FlushStreamToDisk(file.m_pStream); error != 0) {
        throw CFileException(CFileException::OsErrorToCause(error), error, file.GetFilePath());
    }
}

}  // namespace

CPrivateProfile::CPrivateProfile() {
    InitKeyValueMaps();
    LoadLastPath(kLastPathValue);
}

CPrivateProfile::CPrivateProfile(const char* path) {
    InitKeyValueMaps();
    if (path) Read(path);
}

CPrivateProfile::~CPrivateProfile() {
    // Kept: every object records its path, whichever file it worked on, so a short-lived
    // profile that reads some list overwrites the value. Nothing may escape a destructor.
    try {
        SaveLastPath(kLastPathValue);
    } catch (...) {
    }
    FreeKeyValueMaps();
}

// ---- Reading --------------------------------------------------------------------------------

int CPrivateProfile::Read(const char* path) {
    InitKeyValueMaps();
    if (path) SetAsFullPath(path);
    if (m_path.IsEmpty()) return 0;

    const bool existed = qvnrt::platform::FileExists(m_path.str());
    CStdioFile file;
    // m_path keeps the name when the open fails, so a later Write aims at that file.
    if (!file.Open(m_path, CFile::modeRead | CFile::typeText)) return 0;

    int result = 0;
    try {
        const unsigned long long length = file.GetLength();
        if (length > kMaxFileSize) return 0;
        if (length != 0) {
            std::string text(static_cast<size_t>(length), '\0');
            text.resize(file.Read(text.data(), static_cast<unsigned>(length)));
            ParseFileData(text.data(), text.size());
        }
    } catch (const CFileException&) {
        // A file that cannot be read (a directory, an I/O error) reads as nothing.
        return 0;
    }

    if (existed) {
        // A caller must not take the content for valid on 0, although it stays in memory.
        result = IsFileFormatCorrect();
    } else {
        // The file came into being between the check and the open.
        if (!m_fileFormatKey.IsEmpty()) CreateSection(m_fileFormatKey);
        result = 1;
    }
    file.Abort();  // read only: closing can lose nothing
    return result;
}

int CPrivateProfile::ParseFileData(const char* text) {
    if (!text) return 0;
    return ParseFileData(text, std::strlen(text));
}

int CPrivateProfile::ParseFileData(const char* text, size_t length) {
    if (!text) return 0;
    CMapStringToString* current = FindSection(kDefaultSection);
    if (!current) current = AllocSectionKey(kDefaultSection);

    const char* const end = text + length;
    const char* p = text;
    while (p < end) {
        while (p < end && IsLineBreak(*p)) ++p;
        if (p == end) break;

        // A lone carriage return is no line end: a file of those is one long line, whose
        // inner carriage returns stay in the value.
        const char* lineEnd = p;
        while (lineEnd < end && *lineEnd != '\n' && *lineEnd != '\0') ++lineEnd;
        CString line(p, static_cast<int>(lineEnd - p));
        p = lineEnd;

        StripCommentsAndWhiteSpace(line);
        if (line.IsEmpty()) continue;
        if (IsSectionLabel(line)) {
            // A repeated label starts its section afresh: the earlier keys are dropped.
            current = AllocSectionKey(line.Mid(1, line.GetLength() - 2));
            continue;
        }
        CString key;
        CString value;
        if (ParseLine(line, key, value) && !key.IsEmpty() && !value.IsEmpty()) {
            (*current)[key] = value;  // a later line with the same key wins
        }
    }
    return 1;
}

int CPrivateProfile::ParseLine(const char* line, CString& key, CString& value) {
    if (!line || !*line) return 0;
    const char* equals = std::strchr(line, '=');
    if (!equals || equals[1] == '\0') return 0;
    key = CString(line, static_cast<int>(equals - line));
    value = equals + 1;
    StripCommentsAndWhiteSpace(key);
    StripCommentsAndWhiteSpace(value);
    return 1;
}

void CPrivateProfile::StripCommentsAndWhiteSpace(CString& text) {
    // The blank belongs to the marker on purpose: "http://host" is no comment.
    const int comment = text.Find(kCommentMarker);
    if (comment >= 0) text = text.Left(comment);
    text.Trim();
}

int CPrivateProfile::IsSectionLabel(const char* text) {
    if (!text) return 0;
    CString label(text);
    StripCommentsAndWhiteSpace(label);
    const int length = label.GetLength();
    return length >= 2 && label[0] == '[' && label[length - 1] == ']' ? 1 : 0;
}

// ---- Writing --------------------------------------------------------------------------------

void CPrivateProfile::Write() {
    CStdioFile* file = OpenTempFile();
    if (!file) return;

    std::string text;
    auto appendKeys = [&text](const CMapStringToString& keys) {
        CString key;
        CString value;
        for (POSITION position = keys.GetStartPosition(); position;) {
            keys.GetNextAssoc(position, key, value);
            // A key ending in "//" would join the blank of " = " into the comment marker
            // and read back as a comment; it alone is written without that blank.
            const std::string& name = key.str();
            const bool endsInSlashes = name.size() >= 2 && name.compare(name.size() - 2, 2, "//") == 0;
            text.append(name).append(endsInSlashes ? "= " : " = ").append(value.str()).append("\n");
        }
    };
    if (const CMapStringToString* defaults = FindSection(kDefaultSection)) appendKeys(*defaults);
    CString name;
    CMapStringToString* keys = nullptr;
    for (POSITION position = m_sections.GetStartPosition(); position;) {
        m_sections.GetNextAssoc(position, name, keys);
        if (name == kDefaultSection) continue;
        // Every label has a blank line before it, the first one too.
        text.append("\n[").append(name.str()).append("]\n");
        appendKeys(*keys);
    }

    try {
        constexpr size_t kChunk = 1u << 30;  // CFile::Write counts in unsigned
        for (size_t done = 0; done < text.size(); done += kChunk) {
            const size_t size = std::min(kChunk, text.size() - done);
            file->Write(text.data() + done, static_cast<unsigned>(size));
        }
        FlushToDisk(*file);
    } catch (const CFileException&) {
        // The partial copy must not replace the file; the file stays as it was.
        const CString temp = file->GetFilePath();
        delete file;
        qvnrt::platform::DeleteFile(temp.str());
        return;
    }
    CloseAndCopyTempFile(file);
}

CStdioFile* CPrivateProfile::OpenTempFile() {
    if (m_path.IsEmpty()) return nullptr;
    const CString temp = m_path + kTempSuffix;
    auto file = std::make_unique<CStdioFile>();
    if (file->Open(temp, CFile::modeCreate | CFile::modeReadWrite | CFile::typeText)) {
        return file.release();
    }
    // A stale temporary file that could not be opened is deleted; the object still is not
    // open, so this counts as a failure as well.
    try {
        CFile::Remove(temp);
    } catch (const CFileException&) {
    }
    return nullptr;
}

void CPrivateProfile::CloseAndCopyTempFile(CStdioFile* file) {
    if (!file) return;
    std::unique_ptr<CStdioFile> owned(file);
    const CString temp = owned->GetFilePath();
    try {
        owned->Close();
    } catch (const CFileException&) {
        qvnrt::platform::DeleteFile(temp.str());  // incomplete: it must not replace the file
        return;
    }
    // The delete of the old file and the rename stood in one protected step, so a failed
    // delete skips the rename. Kept: where no file exists yet (the delete's failure), the
    // temporary file stays beside the name, and a new profile comes into being only when a
    // file at m_path already exists. Where one exists, rename(2) replaces it in a single
    // step, so no failure between a delete and a rename can lose it.
    try {
        if (!qvnrt::platform::FileExists(m_path.str())) {
            throw CFileException(CFileException::fileNotFound, ENOENT, m_path);
        }
        CFile::Rename(temp, m_path);
    } catch (const CFileException&) {
        // Silent, as every write failure of this class.
    }
}

// ---- Paths ----------------------------------------------------------------------------------

int CPrivateProfile::SetPath(const char* path) {
    if (!path) return 0;
    m_path = path;
    return 1;
}

int CPrivateProfile::SetAsFullPath(const char* path) {
    if (!path) return 0;
    m_path = path;
    if (m_path.IsEmpty()) return 0;  // no file name to complete
    if (m_path.Find('/') >= 0) return 1;
    const std::string directory = qvnrt::platform::HostDirectory();
    if (directory.empty()) return 0;
    m_path = CString(qvnrt::platform::JoinPath(directory, m_path.str()));
    return 1;
}

int CPrivateProfile::LoadLastPath(const char* valueName) {
    const auto key = qvnrt::platform::RegistryKey::Open(kRegistryKey);
    if (!key) return 0;
    std::string value;
    // A failed read (missing, too long) leaves m_path as it was.
    if (key->QueryString(valueName ? valueName : "", value, kLastPathBufferSize)) {
        m_path = CString(value);
    }
    return m_path.IsEmpty() ? 0 : 1;
}

int CPrivateProfile::SaveLastPath(const char* valueName) {
    // The key is opened, never created: a store without it is left alone.
    const auto key = qvnrt::platform::RegistryKey::Open(kRegistryKey);
    if (!key) return 0;
    return key->SetString(valueName ? valueName : "", m_path.str()) ? 1 : 0;
}

// ---- Sections and keys ----------------------------------------------------------------------

CMapStringToString* CPrivateProfile::FindSection(const char* section) const {
    CMapStringToString* keys = nullptr;
    if (!section || !m_sections.Lookup(section, keys)) return nullptr;
    return keys;
}

CMapStringToString* CPrivateProfile::AllocSectionKey(const char* section) {
    if (!section) return nullptr;
    // A map stored under the name is replaced; freeing it is safe because nothing else
    // holds it once it leaves the table.
    delete FindSection(section);
    auto* keys = new CMapStringToString(kKeyMapBlockSize);
    m_sections[section] = keys;
    return keys;
}

void CPrivateProfile::FreeKeyValueMaps() {
    CString name;
    CMapStringToString* keys = nullptr;
    for (POSITION position = m_sections.GetStartPosition(); position;) {
        m_sections.GetNextAssoc(position, name, keys);
        delete keys;
    }
    m_sections.RemoveAll();
}

void CPrivateProfile::InitKeyValueMaps() {
    FreeKeyValueMaps();
    AllocSectionKey(kDefaultSection);
}

void CPrivateProfile::SetFileFormatKey(const char* key) {
    if (!m_fileFormatKey.IsEmpty()) RemoveSection(m_fileFormatKey);
    if (key && *key) {
        m_fileFormatKey = key;
        // A section of that name that is already there keeps its keys.
        CreateSection(key);
    } else {
        m_fileFormatKey.Empty();
    }
}

int CPrivateProfile::IsFileFormatCorrect() {
    return m_fileFormatKey.IsEmpty() || FindSection(m_fileFormatKey) ? 1 : 0;
}

int CPrivateProfile::CreateSection(const char* section) {
    if (!section) return 0;
    if (!FindSection(section)) AllocSectionKey(section);
    return 1;
}

int CPrivateProfile::RemoveSection(const char* section) {
    CMapStringToString* keys = FindSection(section);
    if (!keys) return 0;
    delete keys;
    return m_sections.RemoveKey(section) ? 1 : 0;
}

int CPrivateProfile::RemoveKey(const char* section, const char* key) {
    if (!key) return 0;
    CMapStringToString* keys = FindSection(section);
    if (!keys) return 0;
    return keys->RemoveKey(key) ? 1 : 0;
}

void CPrivateProfile::GetValue(const char* section, const char* key, const char* defaultValue,
                               CString& out) {
    // Looked up before `out` changes: the arguments may point into it.
    CString value(defaultValue);
    if (key) {
        if (const CMapStringToString* keys = FindSection(section)) keys->Lookup(key, value);
    }
    out = value;
}

int CPrivateProfile::GetValue(const char* section, const char* key, int defaultValue) {
    if (!section || !key) return defaultValue;
    CString fallback;
    fallback.Format("%d", defaultValue);
    CString text;
    GetValue(section, key, fallback, text);
    return ToInt(text);
}

int CPrivateProfile::SetValue(const char* section, const char* key, const char* value) {
    if (!section || !*section || !key || !*key || !value || !*value) return 0;
    CreateSection(section);
    (*FindSection(section))[key] = value;
    return 1;
}

int CPrivateProfile::SetValue(const char* section, const char* key, int value) {
    CString text;
    text.Format("%d", value);
    return SetValue(section, key, text);
}

int CPrivateProfile::EnumSection(const char* section, CStringArray& out) {
    out.RemoveAll();
    const CMapStringToString* keys = FindSection(section);
    if (!keys) return 0;
    CString key;
    CString value;
    for (POSITION position = keys->GetStartPosition(); position;) {
        keys->GetNextAssoc(position, key, value);
        out.Add(key + " = " + value);
    }
    return out.GetSize();
}

POSITION CPrivateProfile::GetStartKeyPos(const char* section) {
    if (!section || !*section) return nullptr;
    const CMapStringToString* keys = FindSection(section);
    return keys ? keys->GetStartPosition() : nullptr;
}

void CPrivateProfile::GetNextKeyPos(const char* section, POSITION& position, CString& key,
                                    CString& value) {
    POSITION current = position;
    position = nullptr;
    if (!section || !current) return;
    const CMapStringToString* keys = FindSection(section);
    if (!keys) return;
    keys->GetNextAssoc(current, key, value);
    position = current;
}
