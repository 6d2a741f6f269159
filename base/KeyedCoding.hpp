#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tav {

class KeyedArchiver;
class KeyedUnarchiver;

/// An object that a keyed archive can hold. What makes it again from an archive is entered with
/// `registerArchivedClass`.
class Coding {
  public:
    virtual ~Coding() = default;

    /// The name that the archive has for the class. Objects of one name have the same superclasses.
    [[nodiscard]] virtual std::string className() const = 0;
    /// The names of the classes above it, nearest first: a reader that does not know the class
    /// makes an object of the first of these that it knows.
    [[nodiscard]] virtual std::vector<std::string> superclassNames() const { return {"NSObject"}; }
    /// Encodes the object's content by keys.
    virtual void encode(KeyedArchiver& archiver) const = 0;

  protected:
    Coding() = default;
    Coding(const Coding&) = default;
    Coding& operator=(const Coding&) = default;
};

/// Makes an object from the keys that it encoded; null where there is to be none. May throw
/// `Exception`, which ends the unarchiving.
using ArchivedClassMaker = std::shared_ptr<Coding> (*)(KeyedUnarchiver&);

/// Enters a class under the name that archives have for it, in the place of one that is there. The
/// table is the process's; any thread may enter and look up. Each room with such classes has one
/// function that enters them, which its own coding operations call.
void registerArchivedClass(std::string_view name, ArchivedClassMaker maker);

/// Null when the class has not been entered.
[[nodiscard]] ArchivedClassMaker archivedClassMaker(std::string_view name);

} // namespace tav
