#pragma once

#include <memory>

/// Ends the process with status 1 and one line on standard error where Qt would abort: when the application object
/// finds no display. The line says why, and what to do.
///
/// To be there while the application object is made, which makeApplication() does. One at a time.
class DisplayGuard
{
public:
    /// @param program the line begins with it
    /// @param advice  and ends with it; both have to last as long as the guard
    DisplayGuard(const char *program, const char *advice);
    ~DisplayGuard();

private:
    DisplayGuard(const DisplayGuard &) = delete;
    DisplayGuard &operator=(const DisplayGuard &) = delete;
};

/// Lets a program that is asked for its help or its version alone do without a display.
void allowTextWithoutDisplay(int argc, char **argv);

/// The application object of a program that needs a display.
template<class Application>
std::unique_ptr<Application> makeApplication(int &argc, char **argv, const char *program, const char *advice)
{
    const DisplayGuard guard(program, advice);
    return std::make_unique<Application>(argc, argv);
}
