// A host with Qt's event loop. Looks for one text in the names of files, is told to look for
// another one as soon as something has been found, and prints all that it is given.
//
//     c++ -fPIC qt.cpp -o qt $(pkg-config --cflags --libs searchsystem Qt6Core)
//     ./qt FOLDER TEXT OTHER-TEXT

#include <searchsystem/MainLoop.h>
#include <searchsystem/SearchSystem.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTextStream>

namespace {

SearchPredicate search{};
QString next;

void start(const QString &text) {
  search.nameKeyword = CFStringCreateWithCString(nullptr, text.toUtf8(), kCFStringEncodingUTF8);
  SS_SearchStart(&search);
}

void report(CFStringRef path, int32_t state) {
  if (state == 1) {
    QTextStream(stdout) << CFStringGetCStringPtr(path, kCFStringEncodingUTF8) << Qt::endl;
    if (!next.isEmpty())
      SS_SearchCancel(); // The end is reported nevertheless, and only then can another start.
    return;
  }
  CFRelease(search.nameKeyword);
  if (next.isEmpty())
    QCoreApplication::quit();
  else
    start(std::exchange(next, QString()));
}

} // namespace

int main(int argc, char **argv) {
  QCoreApplication application(argc, argv);
  const QStringList arguments = application.arguments();
  if (arguments.size() != 4)
    return 2;
  QSocketNotifier notifier(PFMainLoopGetDescriptor(), QSocketNotifier::Read);
  QObject::connect(&notifier, &QSocketNotifier::activated, [] { PFMainLoopDispatch(); });
  PFMainLoopSetClock(PFMainLoopClockVirtual); // The end follows the last result at once.
  search.searchFolder =
      CFStringCreateWithFileSystemRepresentation(nullptr, arguments[1].toLocal8Bit());
  search.checkSubFolder = search.isAndSearch = 1;
  search.resultCallback = report;
  next = arguments[3];
  start(arguments[2]);
  const int code = QCoreApplication::exec();
  CFRelease(search.searchFolder);
  return code;
}
