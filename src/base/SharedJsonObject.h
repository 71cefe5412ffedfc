#pragma once

#include <boost/json/object.hpp>
#include <memory>
#include <utility>

namespace morvane {

/// An immutable JSON object that copies by reference: tool arguments may hold whole files and travel
/// through lists that are copied before every turn. Equality is deep and ignores the order of keys.
class SharedJsonObject {
public:
    SharedJsonObject() = default;
    SharedJsonObject(boost::json::object object)
        : m_object(std::make_shared<const boost::json::object>(std::move(object)))
    {
    }

    /// The object; the empty object for a default-constructed value.
    const boost::json::object &get() const
    {
        static const boost::json::object empty;
        return m_object ? *m_object : empty;
    }
    const boost::json::object *operator->() const { return &get(); }

    bool operator==(const SharedJsonObject &other) const
    {
        return m_object == other.m_object || get() == other.get();
    }

private:
    std::shared_ptr<const boost::json::object> m_object;
};

} // namespace morvane
