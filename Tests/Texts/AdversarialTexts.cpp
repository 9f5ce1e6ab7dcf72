#include "AdversarialTexts.h"

#include <array>

namespace {

using namespace std::string_view_literals;

// Most families hold a "?" in every unit, so that the search for one finds work everywhere.
constexpr auto families = std::to_array<AdversarialFamily>({
    {"schemes", "", "http://", ""},
    {"schemes with a question mark each", "", "http://?", ""},
    {"schemes in words", "", "http:// ? ", ""},
    {"scheme and user, again and again", "", "http://a@", "?x"},
    {"scheme letters without an end", "", "a+", "://?x"},
    {"colons and slashes", "", "://", "?x"},
    {"colons", "", "a:", "?x"},
    {"labels of schemes", "", "mailto:", "?x"},
    {"labels behind labels", "", "tel:news:data:", "?x"},
    {"dotted letters", "", "a.", "?x"},
    {"dotted letters as a host", "https://", "a.", "com/?utm_source=a"},
    {"dotted top-level domains", "", "com.", "com?utm_source=a"},
    {"dots", "a", ".", "com?x"},
    {"hyphens", "a", "-", ".com?x"},
    {"host behind host", "", "a.com,", "?x"},
    {"hosts that take a parameter each", "", "a.com?a,", ""},
    {"file names", "", "readme.md,", "?x"},
    {"unknown domains", "", "ab.cdefg?x ", ""},
    {"known domains", "", "a.org?a ", ""},
    {"question marks", "", "?", ""},
    {"question marks in words", "", "?a ", ""},
    {"question marks behind letters", "", "a?", ""},
    {"questions", "", "so? ", ""},
    {"one word", "", "x", "?utm_source=a"},
    {"one word with a scheme", "https://e.com/?utm_source=", "x", ""},
    {"one host", "https://", "x", "/?utm_source=a"},
    {"one name", "https://e.com/?", "x", "=1&utm_source=a"},
    {"opening brackets", "https://e.com/?utm_source=a", "(", ""},
    {"opening brackets behind links", "", "https://e.com/?a(", ""},
    {"closing brackets behind a link", "https://e.com/?utm_source=a", ")", ""},
    {"brackets in pairs", "https://e.com/?utm_source=a", "([{}])", ""},
    {"deep brackets", "https://e.com/?utm_source=a", "((((((((((((((((", "))))))))"},
    {"mixed brackets", "https://e.com/?utm_source=a", "([)]", ""},
    {"percent signs", "https://e.com/?utm_source=a&b=", "%", ""},
    {"escapes", "https://e.com/?utm_source=a&b=", "%e2%82", ""},
    {"broken escapes", "https://e.com/?utm_source=a&b=", "%zz", ""},
    {"at signs", "", "@", "?x"},
    {"mail addresses", "", "a@b.com", "?x"},
    {"mail addresses in words", "", "a@b.org?x ", ""},
    {"mailbox letters", "", "a.com!", "@?x"},
    {"ampersands", "https://e.com/?utm_source=a", "&", ""},
    {"equals signs", "https://e.com/?utm_source=a", "=", ""},
    {"the same parameter", "https://e.com/?utm_source=a", "&b=1", ""},
    {"different parameters", "https://e.com/?utm_source=a", "&p\1=\1", ""},
    {"different parameters twice", "https://e.com/?utm_source=a", "&p\1=1&P\1=1", ""},
    {"removed parameters", "https://e.com/?", "&utm_\1=1", ""},
    {"one link a line", "", "https://e.com/?utm_source=a\n", ""},
    {"shortest links", "", "http://a?si ", ""},
    {"quotes", "\"https://e.com/?utm_source=a", "'\"", ""},
    {"soft endings", "https://e.com/?utm_source=a", ".,;:!?", ""},
    {"soft endings behind links", "", "a.com/.,;:!?", ""},
    {"fragments", "https://e.com/?utm_source=a", "#:~:", ""},
    {"other schemes", "", "x://y?z ", ""},
    {"literal hosts", "", "http://[::1?]", ""},
    {"open literal hosts", "", "http://[", "?x"},
    {"ports", "", "http://a:1:", "?x"},
    {"mixed scripts", "", "aяあ한ا.рф?a ", ""},
    {"unknown scripts", "", "é.é?x ", ""},
    {"ideographic stops", "", "好。", "com?x"},
    {"ideographic stops behind schemes", "", "http://好。", "?x"},
    {"ideographs in a query", "https://e.com/?utm_source=a&b=", "漢字", ""},
    {"ideographs in names", "https://e.com/?utm_source=a", "&漢\1=1", ""},
    {"combining marks", "https://e.com/?utm_source=a&b=", "e\u0301\u0323\u0307", ""},
    {"combining marks in a name", "https://e.com/?utm_source=a&", "\u0301\u0323", "=1"},
    {"combining marks in words", "", "e\u0301.com?x ", ""},
    {"controls of direction", "https://e.com/?utm_source=a", "\u202E\u2066\u2069\u202C", ""},
    {"no-break spaces", "https://e.com/?utm_source=a", "\u00A0?a.b", ""},
    {"zero-width joiners", "", "\U0001F468\u200D.com?x", ""},
    {"bytes that are not UTF-8", "https://e.com/?utm_source=a ", "\xFF?\xC3", ""},
    {"zeros", "https://e.com/?utm_source=a", "\0?"sv, ""},
});

} // namespace

std::string AdversarialFamily::text(std::size_t size) const
{
    std::string result(head);
    for (std::size_t number = 0; result.size() + tail.size() < size; ++number) {
        for (const char c : unit) {
            if (c == '\1')
                result += std::to_string(number);
            else
                result += c;
        }
    }
    return result.append(tail);
}

std::span<const AdversarialFamily> adversarialFamilies()
{
    return families;
}
