#pragma once

#include "readers/documents/Document.h"
#include "readers/documents/FontCache.h"
#include "readers/documents/Matrix.h"
#include "readers/documents/OptionalContent.h"
#include "readers/documents/TextLayout.h"
#include "readers/documents/TextOutput.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace searchsystem {

/// Carries out the operators of content streams (ISO 32000-2, 7.8.2) as far as they show text:
/// those of pages, of the forms that they draw and of annotations' appearances. The document, the
/// maps and the output have to outlive it.
class ContentInterpreter {
public:
  /// Bytes of content in one document, each time that a form is drawn; drawing one costs some more.
  static constexpr std::uint64_t mostContent = std::uint64_t{512} << 20;
  static constexpr std::uint64_t costOfForm = 10'000;
  static constexpr std::size_t deepestForm = 20;
  static constexpr std::size_t deepestState = 500;

  ContentInterpreter(Document &document, const CharacterMaps &maps, TextOutput &output);

  void readPage(const Page &page);
  /// The rest was not read: the document counts as too large.
  [[nodiscard]] bool hasMetLimit() const noexcept { return content_ > mostContent; }

private:
  class Run;

  /// What q saves and Q brings back (8.4.2), as far as text depends on it.
  struct State {
    Matrix matrix;
    Font *font = nullptr;
    double size = 0;
    double characterSpacing = 0;
    double wordSpacing = 0;
    /// Horizontal scaling: 1 is the usual.
    double scaling = 1;
    double leading = 0;
    double rise = 0;
  };
  struct Resources {
    Dictionary dictionary;
    std::vector<std::pair<std::string, Font *>> fonts;
  };
  /// An open sequence of marked content.
  enum class Mark : std::uint8_t { plain, hidden, replaced };
  struct Box {
    double left, bottom, right, top;
  };

  void perform(std::string_view operation, std::span<const Object> operands);
  void performText(std::string_view operation, std::span<const Object> operands);
  void setFont(const Object &name, double size);
  void setFontOfState(const Object &name);
  [[nodiscard]] Font *fontNamed(std::string_view name);

  void nextLine(double x, double y);
  void show(std::span<const Object> strings);
  /// A string begins here, and is written in steps of this size.
  struct Baseline {
    PenPlace start;
    double stepX, stepY;
    [[nodiscard]] PenPlace at(double way) const noexcept {
      PenPlace place = start;
      place.x += way * stepX;
      place.y += way * stepY;
      return place;
    }
  };

  [[nodiscard]] bool closesBlanks(Font &font) const;
  TextLayout::Extent appendWords(Font &font, std::string_view bytes);
  void showPart(std::string_view bytes, const Baseline &baseline, double &way);
  [[nodiscard]] Baseline baseline() const noexcept;
  [[nodiscard]] bool isOffPage(const PenPlace &place) const noexcept;
  [[nodiscard]] bool isSilent() const noexcept { return hiddenMarks_ + replacingMarks_ > 0; }

  void beginMarked(std::span<const Object> operands);
  void endMarked();
  void endMarksFrom(std::size_t count);

  void draw(const Object &name);
  void drawForm(const Object &form, const Stream &stream);
  void readAnnotations(const Page &page);
  void run(std::span<const Stream *const> streams);
  [[nodiscard]] Object resource(std::string_view kind, std::string_view name);

  Document &document_;
  FontCache fonts_;
  OptionalContent optionalContent_;
  TextOutput &output_;
  TextLayout layout_;

  State state_;
  std::vector<State> saved_;
  /// States below are not those of the present form.
  std::size_t savedBelow_ = 0;
  /// How many were not saved, being too deep.
  std::size_t unsaved_ = 0;
  Matrix textMatrix_;
  Matrix lineMatrix_;
  Resources *resources_ = nullptr;
  Box box_{};
  bool hasBox_ = false;

  std::vector<Mark> marks_;
  std::size_t hiddenMarks_ = 0;
  std::size_t replacingMarks_ = 0;
  /// What stands for the text that is shown, until that begins.
  std::string replacement_;

  std::uint64_t content_ = 0;
  /// Forms that are being drawn, by their objects.
  std::vector<std::uint32_t> openForms_;
  /// Forms that were drawn and show no text.
  std::unordered_set<std::uint32_t> formsWithoutText_;
  /// Text was met, shown or hidden, since this was last reset.
  bool hasMetText_ = false;
};

} // namespace searchsystem
