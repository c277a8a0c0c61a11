#include "hosts/qt/PatientWebClient.h"

#include <QEventLoop>
#include <QMetaObject>

#include <thread>

namespace quillomat {

std::optional<Bytes> PatientWebClient::dataWithContentsOfUrl(const std::string& url) {
    waiting_(true);
    std::optional<Bytes> document;
    QEventLoop loop;
    std::thread fetch([&] {
        document = inner_.dataWithContentsOfUrl(url);
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    fetch.join(); // the loop may also have ended because the program does
    waiting_(false);
    return document;
}

} // namespace quillomat
