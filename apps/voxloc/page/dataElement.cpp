#include "page/dataElement.h"

std::string dataElement(const char* id, const std::string& json) {
    std::string text = std::string("<script type=\"application/json\" id=\"") + id + "\">";
    for (const char c : json) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text + "</script>\n";
}
