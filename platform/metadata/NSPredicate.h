#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/foundation/Ref.h"
#include "platform/metadata/MetadataCandidate.h"

#include <initializer_list>
#include <string_view>

/// A condition on one file, made from a format or by `NSCompoundPredicate`.
///
/// A format is one comparison of an attribute with a value:
///
///     kMDItemFSName like 'P'     the name matches the pattern P as a whole: `*` stands for any
///                                text, `?` for one character, a backslash takes away their meaning
///     kMDItemFSName in %@        the value occurs in the name, letter for letter
///     kMDItemFSContentChangeDate > %@   (or <)   the file's own modification date is later
///                                (earlier) than the value; one that cannot be read is neither
///
/// `like[c]` and `in[c]` regard no case. A text is written in single or double quotes, or is the
/// argument that `%@` stands for; a date is always an argument.
///
/// Ownership: counted; holds references to its arguments. Threads: any; immutable.
class NSPredicate : public NSObject {
public:
  /// The condition that `format` states, with the objects that its `%@` stand for, in order; null
  /// when the format is not understood, and when the arguments are not those it asks for. Throws
  /// `std::bad_alloc`.
  static Ref<const NSPredicate>
  predicateWithFormat(std::string_view format,
                      std::initializer_list<const NSObject *> arguments = {});

  /// Whether the file meets the condition. Throws `std::bad_alloc`.
  [[nodiscard]] virtual bool evaluateWithObject(MetadataCandidate &file) const = 0;

  /// Whether the name alone decides, without a look at the disk.
  [[nodiscard]] virtual bool needsNameOnly() const noexcept = 0;

protected:
  NSPredicate() noexcept = default;
  ~NSPredicate() override = default;
};
