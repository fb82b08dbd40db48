// Texts as a stranger may send them, for names and for what is said.
#pragma once

#include <string>
#include <vector>

inline std::vector<std::string> HostileTexts() {
    using namespace std::string_literals;
    return {"<img src=\"file:///etc/passwd\"><b>bold</b><script>x</script>",
            "<a href=\"file:///etc/passwd\">click</a>",
            "http://a.example/\"onclick=\"x http://b.example/?a=1&b=2",
            "javascript:alert(1) file:///etc/passwd ftp://c.example/ qrc:/icons",
            "&amp;&lt;b&gt;&#60;&nbsp; &&",
            "line\r\nend\ttab\u2028separator\x1b[31m",
            "\u202Egnp.exe\u2066\u200F",
            std::string(131072, 'w'),
            "\xff\xfe broken \xc3 \xf0\x9f"s};
}
