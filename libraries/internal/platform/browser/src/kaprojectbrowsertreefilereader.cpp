#include "kaprojectbrowsertreefilereader.h"

#include <QSet>

#include <cstring>

namespace {

bool isNameStart(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool isNameChar(char c)
{
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Characters that XML allows in a document.
bool isXmlChar(uint c)
{
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD)
        || (c >= 0x10000 && c <= 0x10FFFF);
}

} // namespace

KAProjectBrowserTreeFileReader::KAProjectBrowserTreeFileReader(const QByteArray& bytes)
    : m_p(bytes.constData())
    , m_end(bytes.constData() + bytes.size())
{
}

// Strict UTF-8 of XML characters only: no overlong forms, surrogates,
// code points past U+10FFFF, nor U+FFFE and U+FFFF.
bool KAProjectBrowserTreeFileReader::isValidUtf8(const QByteArray& bytes)
{
    const auto* p = reinterpret_cast<const uchar*>(bytes.constData());
    const auto* end = p + bytes.size();
    while (p < end) {
        const uchar c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int extra;
        uint code;
        if ((c & 0xE0) == 0xC0) {
            extra = 1;
            code = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            code = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            code = c & 0x07;
        } else {
            return false;
        }
        if (end - p <= extra)
            return false;
        for (int i = 1; i <= extra; ++i) {
            if ((p[i] & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (p[i] & 0x3F);
        }
        static const uint smallest[] = {0, 0x80, 0x800, 0x10000};
        if (code < smallest[extra] || !isXmlChar(code))
            return false;
        p += extra + 1;
    }
    return true;
}

void KAProjectBrowserTreeFileReader::skipSpace()
{
    while (m_p < m_end && (*m_p == ' ' || *m_p == '\n' || *m_p == '\r' || *m_p == '\t'))
        ++m_p;
}

bool KAProjectBrowserTreeFileReader::literal(const char* text)
{
    const size_t size = std::strlen(text);
    if (size_t(m_end - m_p) < size || std::memcmp(m_p, text, size) != 0)
        return false;
    m_p += size;
    return true;
}

bool KAProjectBrowserTreeFileReader::name(QByteArray* out)
{
    const char* begin = m_p;
    if (m_p == m_end || !isNameStart(*m_p))
        return false;
    while (m_p < m_end && isNameChar(*m_p))
        ++m_p;
    *out = QByteArray(begin, int(m_p - begin));
    return true;
}

bool KAProjectBrowserTreeFileReader::appendCharacterReference(QString* out, const char* begin, const char* end)
{
    const QByteArray digits(begin, int(end - begin));
    const bool hex = digits.startsWith('x');
    if (digits.size() < (hex ? 2 : 1))
        return false;
    for (int i = hex ? 1 : 0; i < digits.size(); ++i) {
        const char c = digits.at(i);
        const bool digit = c >= '0' && c <= '9';
        if (!digit && !(hex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'))))
            return false;
    }
    bool ok = false;
    const uint code = digits.startsWith('x') ? digits.mid(1).toUInt(&ok, 16) : digits.toUInt(&ok, 10);
    if (!ok || !isXmlChar(code))
        return false;
    if (code >= 0x10000) {
        out->append(QChar(QChar::highSurrogate(code)));
        out->append(QChar(QChar::lowSurrogate(code)));
    } else {
        out->append(QChar(ushort(code)));
    }
    return true;
}

bool KAProjectBrowserTreeFileReader::value(QString* out)
{
    if (m_p == m_end || *m_p != '"')
        return false;
    const char* begin = ++m_p;
    bool plain = true;
    while (m_p < m_end && *m_p != '"') {
        const char c = *m_p;
        // A parser turns raw line breaks and tabs of a value into spaces.
        if (c == '<' || c == '\t' || c == '\n' || c == '\r')
            return false;
        if (c == '&')
            plain = false;
        ++m_p;
    }
    if (m_p == m_end)
        return false;
    const char* end = m_p++;
    if (plain) {
        *out = QString::fromUtf8(begin, int(end - begin));
        return true;
    }
    out->clear();
    const char* run = begin;
    for (const char* q = begin; q < end;) {
        if (*q != '&') {
            ++q;
            continue;
        }
        out->append(QString::fromUtf8(run, int(q - run)));
        const char* semicolon = static_cast<const char*>(std::memchr(q, ';', size_t(end - q)));
        if (!semicolon)
            return false;
        const QByteArray entity(q + 1, int(semicolon - q - 1));
        if (entity == "lt")
            out->append(QLatin1Char('<'));
        else if (entity == "gt")
            out->append(QLatin1Char('>'));
        else if (entity == "amp")
            out->append(QLatin1Char('&'));
        else if (entity == "quot")
            out->append(QLatin1Char('"'));
        else if (entity == "apos")
            out->append(QLatin1Char('\''));
        else if (!entity.startsWith('#') || entity.size() < 2
                 || !appendCharacterReference(out, q + 2, semicolon))
            return false;
        q = semicolon + 1;
        run = q;
    }
    out->append(QString::fromUtf8(run, int(end - run)));
    return true;
}

bool KAProjectBrowserTreeFileReader::skipAttributes(bool* empty)
{
    QSet<QByteArray> seen;
    for (;;) {
        const char* before = m_p;
        skipSpace();
        if (literal("/>")) {
            *empty = true;
            return true;
        }
        if (literal(">")) {
            *empty = false;
            return true;
        }
        QByteArray attribute;
        QString ignored;
        // Attributes are separated by spaces; a name is unique in its tag.
        if (m_p == before || !name(&attribute) || seen.contains(attribute))
            return false;
        seen.insert(attribute);
        skipSpace();
        if (!literal("="))
            return false;
        skipSpace();
        if (!value(&ignored))
            return false;
    }
}

bool KAProjectBrowserTreeFileReader::readBranch(FolderMap* map, const QByteArray& tag)
{
    const QByteArray close = "</" + tag + ">";
    QString lastFolder;
    QStringList* names = nullptr;
    for (;;) {
        skipSpace();
        if (literal(close.constData()))
            return true;
        QString name;
        QString folder;
        if (!literal("<KAObject2 name=") || !value(&name) || !literal(" folder=") || !value(&folder))
            return false;
        skipSpace();
        if (!literal("/>"))
            return false;
        // Entries of one folder come together: its list is looked up once.
        if (!names || folder != lastFolder) {
            names = &(*map)[folder];
            lastFolder = folder;
        }
        names->append(name);
    }
}

bool KAProjectBrowserTreeFileReader::read(const QStringList& branchTags, QMap<QString, FolderMap>* branches)
{
    if (!literal("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"))
        return false;
    skipSpace();
    if (literal("<!DOCTYPE")) {
        if (!literal(" projectBrowser_tree>"))
            return false;
        skipSpace();
    }
    bool empty = false;
    if (!literal("<root") || m_p == m_end || (*m_p != ' ' && *m_p != '>' && *m_p != '/')
        || !skipAttributes(&empty))
        return false;
    QMap<QString, FolderMap> result;
    if (!empty) {
        for (;;) {
            skipSpace();
            if (literal("</root>"))
                break;
            QByteArray tag;
            if (!literal("<") || !name(&tag))
                return false;
            const QString branch = QString::fromLatin1(tag);
            // Unknown and repeated branches are the general reader's.
            if (!branchTags.contains(branch) || result.contains(branch))
                return false;
            bool emptyBranch = false;
            if (!skipAttributes(&emptyBranch))
                return false;
            FolderMap& map = result[branch];
            if (!emptyBranch && !readBranch(&map, tag))
                return false;
        }
    }
    skipSpace();
    if (m_p != m_end)
        return false;
    *branches = result;
    return true;
}
