#include "utility/suitenames.h"

#include <iterator>

namespace roundup {
namespace {

struct SuiteName {
    const char16_t* typeDes;
    const char16_t* type;
};

// By number, from 1.
constexpr SuiteName kSuites[] = {
    {u"OFFICE_2003", u"OFFICE"},         {u"OFFICE_2007", u"OFFICE"},         {u"OFFICE_2010", u"OFFICE"},
    {u"OFFICE_2013", u"OFFICE"},         {u"OFFICE_2016", u"OFFICE"},         {u"VISIO_2003", u"VISIO"},
    {u"VISIO_2007", u"VISIO"},           {u"VISIO_2010", u"VISIO"},           {u"VISIO_2013", u"VISIO"},
    {u"VISIO_2016", u"VISIO"},           {u"PROJECT_2003", u"PROJECT"},       {u"PROJECT_2007", u"PROJECT"},
    {u"PROJECT_2010", u"PROJECT"},       {u"PROJECT_2013", u"PROJECT"},       {u"PROJECT_2016", u"PROJECT"},
    {u"COMPONENTS_2013", u"COMPONENTS"}, {u"COMPONENTS_2016", u"COMPONENTS"},
};
static_assert(std::size(kSuites) == SuiteNumber::kComponents2016);

const SuiteName* Find(std::uint32_t number) noexcept {
    return number >= 1 && number <= std::size(kSuites) ? &kSuites[number - 1] : nullptr;
}

}  // namespace

const char16_t* SuiteTypeDes(std::uint32_t number) noexcept {
    const SuiteName* const suite = Find(number);
    return suite != nullptr ? suite->typeDes : nullptr;
}

const char16_t* SuiteType(std::uint32_t number) noexcept {
    const SuiteName* const suite = Find(number);
    return suite != nullptr ? suite->type : nullptr;
}

}  // namespace roundup
