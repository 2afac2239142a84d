// Classes and functions of a host that bear the library's names, and end the process if the library
// calls them.

#include <cstdlib>
#include <string>
#include <string_view>

class Runnable;
class ThreadJob;
class FileItem;
class Work;

class ThreadPool {
public:
  static ThreadPool &shared();
  int run(Runnable &runnable);
};
ThreadPool &ThreadPool::shared() { std::abort(); }
int ThreadPool::run(Runnable & /*runnable*/) { std::abort(); }

class NSString {
public:
  static NSString *create(std::string_view text);
  [[nodiscard]] const char *UTF8String() const;
};
NSString *NSString::create(std::string_view /*text*/) { std::abort(); }
const char *NSString::UTF8String() const { std::abort(); }

class NSThread {
public:
  static int detachNewThread(ThreadJob &job);
};
int NSThread::detachNewThread(ThreadJob & /*job*/) { std::abort(); }

class MainRunLoop {
public:
  static MainRunLoop &shared();
  void post(Work &work);
  [[nodiscard]] bool isMainThread() const;
};
MainRunLoop &MainRunLoop::shared() { std::abort(); }
void MainRunLoop::post(Work & /*work*/) { std::abort(); }
bool MainRunLoop::isMainThread() const { std::abort(); }

class DirectoryListing {
public:
  static DirectoryListing *open(std::string_view path);
};
DirectoryListing *DirectoryListing::open(std::string_view /*path*/) { std::abort(); }

bool isFilePackage(const FileItem & /*item*/) { std::abort(); }
std::string resolvedPath(const std::string & /*path*/) { std::abort(); }
