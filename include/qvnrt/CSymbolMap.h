/// \file
/// CSymbolMap: translates between two providers' symbol sets. The set on the left of the map
/// is called RT and the one on the right DL. A symbol that the map does not know translates
/// to itself. The pairs live in a ".smd" text file, one per pair of providers.
#pragma once

#include <qvnrt/compat/CMap.h>
#include <qvnrt/compat/CStdioFile.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/export.h>

/// Symbol pairs between two providers, loaded from and written to a ".smd" file. The texts
/// that RT2DL and DL2RT return lie in shared storage, valid until the next call. The
/// library's own instance is appSymbolMap.
class QVNRT_API CSymbolMap : public CStdioFile {
public:
    CSymbolMap();
    ~CSymbolMap() override;

    /// Reads "<directory>/<first word of provider1>_<first word of provider2>.smd". An empty
    /// directory keeps the one given before, or else takes the directory of the module named
    /// by qvnrtSetAppName. With merge 0 the old pairs are dropped once the header checks
    /// pass. 1 on success; failures are told through the UI host and give 0.
    int LoadMap(char* directory, char* provider1, char* provider2, int merge);
    int LoadMap(CString& directory, CString& provider1, CString& provider2, int merge);
    /// Writes the file with the flags given to SetMode (which must allow writing and
    /// creating). 1 on success.
    int WriteMap();
    /// The open flags (CFile::OpenFlags) of the map file; 0 reads.
    void SetMode(unsigned int flags);

    /// Translations. The text returned lies in the object and changes with the next call.
    /// `found`, when given, says whether the map knew the symbol.
    const char* RT2DL(char* symbol, int* found);
    const CString& RT2DL(CString symbol, int* found);
    const char* DL2RT(char* symbol, int* found);
    const CString& DL2RT(CString symbol, int* found);

    /// Stores a pair as given, without upper-casing: lower-case pairs are kept and written but
    /// never found.
    void SetAt(CString rt, CString dl);
    POSITION GetStartPosition() const;
    void GetNextAssoc(POSITION& position, CString& rt, CString& dl);
    void RemoveAll();
    /// Empties the maps, the texts and the file name.
    void Clear();

    CMapStringToString m_RT2DL;
    CMapStringToString m_DL2RT;
    CString m_strUnused;  ///< cleared and never otherwise used
    CString m_path;       ///< the directory, and after MakePath the whole file path
    CString m_provider1;
    CString m_provider2;
    CString m_result;     ///< the last translation
    CString m_work;       ///< working copy of the symbol
    unsigned int m_mode;

private:
    int MakePath();
    int ReadMap(int merge);
    const CString& Translate(const CMapStringToString& map, const CString& symbol, int* found);
};

/// The library's shared symbol map, used for the symbols of requests.
QVNRT_API extern CSymbolMap appSymbolMap;
