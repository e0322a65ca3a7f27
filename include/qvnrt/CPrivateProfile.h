/// \file
/// CPrivateProfile: a sectioned "key = value" text file, held wholly in memory. It is read at
/// once, changed in memory and written back at once through a temporary file.
///
/// The file format, as this class reads it:
/// - "[name]" (after stripping) starts a section; the name is what stands between the
/// brackets, unstripped. A second label of the same name starts that section afresh.
/// - "key = value" lines are split at the first '='; both halves are stripped. Lines
/// without '=' or with an empty half are dropped.
/// - A comment starts at the first "// " (with the blank) and runs to the end of the line.
/// "//" alone is no comment, so a value holding a web address keeps its double slash.
/// - Lines end with a line feed; a lone carriage return is an ordinary character.
/// - Keys before the first label belong to the default section, which is never labelled
/// in the file; its name is "<!!!! - Default - !!!!>".
/// Sections and keys are written in the maps' iteration order, not the order of the file,
/// and comments are not kept.
///
/// Bare file names (without a '/') lie in the host directory. Every object records the path
/// it worked on in the registry store when it ends ("Last Private Profile"); only the
/// default constructor reads that value back.
#pragma once

#include <cstddef>

#include <qvnrt/compat/CArray.h>
#include <qvnrt/compat/CMap.h>
#include <qvnrt/compat/CStdioFile.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/export.h>

/// A sectioned "key = value" file held in memory. File errors are caught inside the class
/// and reported by results; no exception leaves it.
class QVNRT_API CPrivateProfile {
public:
    /// Creates the default section and loads the last path from the registry store; the
    /// file is not read.
    CPrivateProfile();
    /// Creates the default section and reads `path` when it is not null. The last path is
    /// not loaded.
    explicit CPrivateProfile(const char* path);
    /// Saves the path under "Last Private Profile", then frees the sections.
    virtual ~CPrivateProfile();

    /// 1 when the file was read and carries the format section (or no format key is set);
    /// 0 otherwise, with whatever was parsed still in memory. A null path reads m_path.
    int Read(const char* path);
    /// Writes every section through "<path>.tmp". Silent on failure; a failed write leaves
    /// the file as it was. The temporary file replaces the file only where one already
    /// exists, so the first Write of a new profile leaves just "<path>.tmp".
    void Write();
    /// Stores the path as given (no host directory is put before it). 0 for null.
    int SetPath(const char* path);

    int LoadLastPath(const char* valueName);
    int SaveLastPath(const char* valueName);

    void SetFileFormatKey(const char* key);
    int IsFileFormatCorrect();

    int CreateSection(const char* section);
    int RemoveSection(const char* section);
    int RemoveKey(const char* section, const char* key);

    void GetValue(const char* section, const char* key, const char* defaultValue, CString& out);
    /// The stored text read as a number: text that is no number reads as 0.
    int GetValue(const char* section, const char* key, int defaultValue);
    /// 0 when any argument is null or empty: a value cannot be set to an empty text.
    int SetValue(const char* section, const char* key, const char* value);
    int SetValue(const char* section, const char* key, int value);

    /// One "key = value" text per key; the number of keys, 0 for an unknown section.
    int EnumSection(const char* section, CStringArray& out);
    POSITION GetStartKeyPos(const char* section);
    void GetNextKeyPos(const char* section, POSITION& position, CString& key, CString& value);

protected:
    /// Stores a new, empty key map under `section`; a map already stored there is freed.
    CMapStringToString* AllocSectionKey(const char* section);
    /// Closes the temporary file and moves it over m_path; takes ownership of `file`.
    void CloseAndCopyTempFile(CStdioFile* file);
    void FreeKeyValueMaps();
    void InitKeyValueMaps();
    int IsSectionLabel(const char* text);
    /// "<m_path>.tmp", created and opened for writing; null when that fails. The caller
    /// owns the object.
    CStdioFile* OpenTempFile();
    /// Parses the text up to its terminator. 0 for null.
    int ParseFileData(const char* text);
    /// Parses `length` bytes. A NUL byte ends a line, as a line feed does, so a damaged file
    /// loses no line that follows one.
    int ParseFileData(const char* text, size_t length);
    int ParseLine(const char* line, CString& key, CString& value);
    int SetAsFullPath(const char* path);
    void StripCommentsAndWhiteSpace(CString& text);

public:
    CString m_fileFormatKey;
    CString m_path;
    /// Section name to its keys; the profile owns the inner maps.
    qvnrt::compat::HashMap<CString, CMapStringToString*, qvnrt::compat::StringHash> m_sections;

private:
    CMapStringToString* FindSection(const char* section) const;
};
