#include "platform/Seam.hpp"

#include <gtest/gtest.h>

namespace tav {
namespace {

class Greeter;
Greeter& realGreeter();

class Greeter : public Seam<Greeter, realGreeter> {
  public:
    explicit Greeter(int number) : number_(number) {}
    [[nodiscard]] int number() const { return number_; }

  private:
    int number_;
};

Greeter& realGreeter() {
    static Greeter real(0);
    return real;
}

TEST(Seam, CurrentIsTheRealOneAtFirst) { EXPECT_EQ(&Greeter::current(), &realGreeter()); }

TEST(Seam, AReplacementHoldsForItsScope) {
    Greeter other(1);
    {
        const Greeter::Replacement replacement(other);
        EXPECT_EQ(&Greeter::current(), &other);
    }
    EXPECT_EQ(&Greeter::current(), &realGreeter());
}

TEST(Seam, ReplacementsNest) {
    Greeter first(1);
    Greeter second(2);
    const Greeter::Replacement outer(first);
    {
        const Greeter::Replacement inner(second);
        EXPECT_EQ(Greeter::current().number(), 2);
    }
    EXPECT_EQ(Greeter::current().number(), 1);
}

class OtherSeam;
OtherSeam& realOtherSeam();
class OtherSeam : public Seam<OtherSeam, realOtherSeam> {};
OtherSeam& realOtherSeam() {
    static OtherSeam real;
    return real;
}

TEST(Seam, EachSeamHasItsOwnCurrentInstance) {
    Greeter greeter(1);
    OtherSeam other;
    const Greeter::Replacement replacement(greeter);
    EXPECT_EQ(&OtherSeam::current(), &realOtherSeam());
    const OtherSeam::Replacement second(other);
    EXPECT_EQ(&OtherSeam::current(), &other);
    EXPECT_EQ(&Greeter::current(), &greeter);
}

} // namespace
} // namespace tav
