#pragma once

#include <QWidget>

#include <type_traits>

/// The first descendant of @p root that is a T and that @p matches accepts; null without one.
///
/// Visits the objects in the order of QObject::findChildren(), without making a list of them
/// all: a window with a thousand modules is searched at every call. Widgets have widgets for
/// parents, so the search for one passes over everything else with what descends from it.
template<class T, class Predicate>
T *firstDescendant(const QObject *root, const Predicate &matches)
{
    for (QObject *child : root->children()) {
        if (std::is_base_of_v<QWidget, T> && !child->isWidgetType())
            continue;
        if (T *candidate = qobject_cast<T *>(child); candidate && matches(candidate))
            return candidate;
        if (T *found = firstDescendant<T>(child, matches))
            return found;
    }
    return nullptr;
}
