#pragma once

// While one of these lives, what the calling thread calls in the C library follows the classic
// locale, whatever the process has set. Other threads notice nothing.
class ClassicLocaleScope {
public:
  ClassicLocaleScope();
  ~ClassicLocaleScope();
  ClassicLocaleScope(const ClassicLocaleScope&) = delete;
  ClassicLocaleScope& operator=(const ClassicLocaleScope&) = delete;

private:
  void* fBefore;  // the thread's locale before; null when it could not be changed
};
