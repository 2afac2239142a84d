#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Ref.h"
#include "platform/foundation/TextPattern.h"
#include "platform/metadata/MetadataCandidate.h"

#include <initializer_list>
#include <string_view>

namespace searchsystem {

/// A condition on one file, made from a format or by `NSCompoundPredicate`.
///
/// A format is one comparison of an attribute with a value:
///
///     kMDItemFSName like 'P'     the whole name matches the pattern P: `*` matches any text, `?`
///                                one character, and a backslash escapes them
///     kMDItemFSName in %@        the value occurs in the name, letter for letter
///     kMDItemFSContentChangeDate > %@   (or <)   the file's own modification date is later
///                                (earlier) than the value; one that cannot be read is neither
///
/// `like[c]` and `in[c]` ignore case. A text is in single or double quotes, which it does not hold,
/// or is the argument for `%@`; a date is always an argument.
///
/// Ownership: counted; copies its arguments. Threads: any; immutable.
class NSPredicate : public NSObject {
public:
  /// The condition that `format` states, with the argument for its `%@`; null if the format is
  /// invalid or the arguments do not fit it. Throws `std::bad_alloc`.
  static Ref<const NSPredicate>
  predicateWithFormat(std::string_view format,
                      std::initializer_list<const NSObject *> arguments = {});

  /// Whether the file meets the condition. Throws `std::bad_alloc`.
  [[nodiscard]] virtual bool evaluateWithObject(MetadataCandidate &file) const = 0;

  /// Whether the name alone decides, without a look at the disk.
  [[nodiscard]] virtual bool needsNameOnly() const noexcept = 0;

  /// A text that occurs in the name of every file that meets the condition; null if none is known.
  /// The predicate owns it.
  [[nodiscard]] virtual const TextPattern *textInName() const noexcept { return nullptr; }

protected:
  NSPredicate() noexcept = default;
  ~NSPredicate() override = default;
};

} // namespace searchsystem
