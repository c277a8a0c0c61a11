#include "hosts/desktop/PlainDocumentAccess.h"

namespace quillomat {

bool PlainDocumentAccess::startAccessing(const std::string&) {
    return true;
}

void PlainDocumentAccess::stopAccessing(const std::string&) {}

void PlainDocumentAccess::coordinateReading(const std::string&, const std::function<void()>& read) {
    read();
}

} // namespace quillomat
