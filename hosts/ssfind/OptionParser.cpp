#include "hosts/ssfind/OptionParser.h"

#include "hosts/ssfind/CommandLine.h"
#include "hosts/ssfind/HelpText.h"
#include "hosts/ssfind/Hints.h"
#include "hosts/ssfind/MarkedText.h"
#include "hosts/ssfind/StandardError.h"
#include "hosts/ssfind/VisibleText.h"
#include "platform/foundation/Version.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace searchsystem::ssfind {

namespace {

constexpr const char *tryHelp = "Try 'ssfind --help'.\n";

struct UsageFault {
  std::string message;
  /// Places on the command line.
  std::vector<std::size_t> places;
};

class HelpFormatter final : public CLI::Formatter {
public:
  HelpFormatter() { column_width(26); }

  std::string make_usage(const CLI::App * /*app*/, std::string /*name*/) const override {
    return "\n";
  }
  std::string make_group(std::string group, bool isPositional,
                         std::vector<const CLI::Option *> options) const override {
    return CLI::Formatter::make_group(group, isPositional, options).substr(1);
  }
  std::string make_option_name(const CLI::Option *option, bool /*isPositional*/) const override {
    const std::string longName = "--" + option->get_lnames().front();
    return option->get_snames().empty() ? "    " + longName
                                        : '-' + option->get_snames().front() + ", " + longName;
  }
  std::string make_option_opts(const CLI::Option *option) const override {
    return option->get_option_text().empty() ? "" : ' ' + option->get_option_text();
  }
};

/// The options of the command: their names and help and, after parsing, their values.
class OptionTable {
public:
  explicit OptionTable(CommandLine commandLine);

  ParsedOptions parse();

private:
  void addConditions();
  void addPlaces();
  void addOutput();
  void addCommands();
  void addOthers();
  CLI::Option *addFlag(const std::string &names, const std::string &help);
  CLI::Option *addValue(const std::string &names, const std::string &value,
                        const std::string &help);

  /// Takes a command to run out of them.
  [[nodiscard]] std::vector<std::string> argumentsForParser();
  [[nodiscard]] bool isCommandBehind(const std::string &argument) const;
  void refuseWordOfOneDash(const std::string &argument) const;
  [[nodiscard]] bool takesValue(const std::string &option) const;
  [[nodiscard]] bool isValueBehind(const std::string &argument) const;
  std::optional<IndexTask> indexTask() const;
  Options options() const;
  void readOperands(Options &options) const;
  void readConditions(Options &options) const;
  void readNames(Options &options) const;
  void readKeywords(Options &options) const;
  void readRestrictions(Options &options) const;
  std::optional<DateRange> dateRange(const CLI::Option *option) const;
  [[nodiscard]] bool isGiven(const CLI::Option *option) const { return option->count() != 0; }
  [[nodiscard]] std::vector<std::string> extensions() const;
  void readOutput(OutputOptions &output) const;
  template <class Value>
  Value choice(const CLI::Option *option, const std::map<std::string_view, Value> &choices) const;
  std::uint64_t positiveNumber(const CLI::Option *option) const;

  [[noreturn]] void failText(const CLI::Option *option, const std::string &text,
                             const TextError &error) const;
  [[noreturn]] void failValue(const CLI::Option *option, const std::string &message) const;
  [[noreturn]] void failValue(const CLI::Option *option, const std::string &value,
                              const std::string &message) const;
  [[nodiscard]] std::vector<std::size_t> placesOf(const CLI::Option *option) const;
  [[nodiscard]] UsageFault faultOf(const CLI::ParseError &error) const;
  [[nodiscard]] UsageFault faultOfValue(const CLI::ArgumentMismatch &error) const;
  [[nodiscard]] UsageError usageError(const UsageFault &fault) const;

  CLI::App app_{helpHeader, "ssfind"};
  const CommandLine commandLine_;
  /// The arguments of --exec or --exec-batch, and where they stand.
  std::vector<std::string> command_;
  std::set<std::size_t> placesOfCommand_;

  CLI::Option *name_ = nullptr;
  CLI::Option *glob_ = nullptr;
  CLI::Option *regex_ = nullptr;
  CLI::Option *modified_ = nullptr;
  CLI::Option *keyword_ = nullptr;
  CLI::Option *in_ = nullptr;
  CLI::Option *taken_ = nullptr;
  CLI::Option *any_ = nullptr;
  CLI::Option *caseSensitive_ = nullptr;
  CLI::Option *plain_ = nullptr;
  CLI::Option *extensions_ = nullptr;
  CLI::Option *size_ = nullptr;
  CLI::Option *exclude_ = nullptr;
  CLI::Option *hidden_ = nullptr;
  CLI::Option *maxDepth_ = nullptr;
  CLI::Option *noSubfolders_ = nullptr;
  CLI::Option *mounts_ = nullptr;
  CLI::Option *filesFrom_ = nullptr;
  CLI::Option *noIndex_ = nullptr;
  CLI::Option *nul_ = nullptr;
  CLI::Option *json_ = nullptr;
  CLI::Option *long_ = nullptr;
  CLI::Option *sort_ = nullptr;
  CLI::Option *reverse_ = nullptr;
  CLI::Option *format_ = nullptr;
  CLI::Option *count_ = nullptr;
  CLI::Option *quiet_ = nullptr;
  CLI::Option *unread_ = nullptr;
  CLI::Option *limit_ = nullptr;
  CLI::Option *color_ = nullptr;
  CLI::Option *exec_ = nullptr;
  CLI::Option *execBatch_ = nullptr;
  CLI::Option *jobs_ = nullptr;
  CLI::Option *indexStatus_ = nullptr;
  CLI::Option *indexClear_ = nullptr;
};

OptionTable::OptionTable(CommandLine commandLine) : commandLine_(std::move(commandLine)) {
  app_.formatter(std::make_shared<HelpFormatter>());
  app_.footer(helpFooter);
  // The parser would split names such as [a,b]; taking operands from its rest keeps them whole.
  app_.allow_extras();
  addConditions();
  addPlaces();
  addOutput();
  addCommands();
  addOthers();
}

CLI::Option *OptionTable::addFlag(const std::string &names, const std::string &help) {
  return app_.add_flag(names, help)->disable_flag_override();
}

CLI::Option *OptionTable::addValue(const std::string &names, const std::string &value,
                                   const std::string &help) {
  return app_.add_option(names, help)->option_text(value)->take_last();
}

void OptionTable::addConditions() {
  app_.option_defaults()->group("Conditions (without any, all files match)");
  name_ = addValue("-n,--name", "TEXT",
                   "TEXT occurs in the file's name, in any case; may be\n"
                   "repeated, as may --keyword: all must hold")
              ->take_all();
  glob_ = addFlag("-g,--glob", "each --name is a pattern of the whole name: * is any\n"
                               "text, ? a character, [a-z] one of these, {a,b} either");
  regex_ = addFlag("--regex", "each --name is a regular expression for a part of the\n"
                              "name, in the syntax of RE2");
  glob_->excludes(regex_);
  for (CLI::Option *const syntax : {glob_, regex_})
    syntax->needs(name_);
  modified_ = addValue("-m,--modified", "RANGE", "last changed in RANGE (see below)");
  keyword_ =
      addValue("-k,--keyword", "TEXT", "TEXT occurs in the file, where --in says")->take_all();
  in_ = addValue("--in", "KINDS",
                 "pdf: the text of documents; exif: what photographs\n"
                 "say of themselves; default: pdf,exif");
  taken_ = addValue("-t,--taken", "RANGE", "photographed in RANGE, by the camera's clock");
  in_->needs(keyword_);
  any_ = addFlag("--any", "one condition is enough (default: all must hold)");
  caseSensitive_ = addFlag("-s,--case-sensitive", "texts must agree to the letter");
  extensions_ =
      app_.add_option("-e,--extension", "only files with this extension; may be repeated, and\n"
                                        "name others than those above, for searches by name\n"
                                        "and date")
          ->option_text("EXT")
          ->take_all();
  size_ = addValue("-S,--size", "SIZES", "of that size (see below), whatever --any says");
  plain_ = addFlag("--plain", "four kinds of files only, and PDF files of the simplest\n"
                              "make: as the library searches by itself (see below)");
}

void OptionTable::addPlaces() {
  app_.option_defaults()->group("Where to look");
  noSubfolders_ = addFlag("--no-subfolders", "leave out what lies in folders below FOLDER");
  maxDepth_ = addValue("-d,--max-depth", "N", "at most N folders deep; with 1 only FOLDER itself");
  exclude_ = addValue("-E,--exclude", "GLOB",
                      "leave out files and folders of that name, with all\n"
                      "below; with a / in it, of that path below FOLDER; may\n"
                      "be repeated")
                 ->take_all();
  hidden_ = addFlag("-H,--hidden", "look into folders whose names begin with a dot, too\n"
                                   "(files whose own names do are never found)");
  noSubfolders_->excludes(maxDepth_);
  mounts_ = addFlag("--mounts", "search other file systems mounted below FOLDER too\n"
                                "(default: name each on standard error)");
  filesFrom_ = addValue("--files-from", "FILE",
                        "look at the files listed in FILE, one path a line, and\n"
                        "search the folders in it; - is standard input");
  noIndex_ = addFlag("--no-index", "do not use the metadata index");
}

void OptionTable::addOutput() {
  app_.option_defaults()->group("Output");
  nul_ = addFlag("-0,--print0", "NUL in place of the line end after each path, in\n"
                                "the output and in the list of --files-from");
  json_ = addFlag("--json", "a JSON object a line: path, size, modified; a path\n"
                            "that is not UTF-8 is {\"bytes\":\"<base64>\"};\n"
                            "with --taken or --sort taken also taken, maker and\n"
                            "model, or null");
  long_ = addFlag("-l,--long", "size, date of change and, with --taken, shooting date\n"
                               "and camera before each path");
  sort_ = addValue("--sort", "ORDER",
                   "path or name (byte by byte), size (largest first),\n"
                   "modified or taken (newest first); default: as found");
  reverse_ = addFlag("--reverse", "the other way round; what has no such date is last");
  format_ = addValue("--format", "FORMAT",
                     "FORMAT for each match, with {path} {name} {size}\n"
                     "{modified} {taken}, {{ and }} for braces, \\t and \\n");
  reverse_->needs(sort_);
  count_ = addFlag("--count", "only the number of matches");
  quiet_ = addFlag("-q,--quiet", "nothing; end with code 0 at the first match");
  unread_ = addFlag("--unread", "in place of the matches the files that could not\n"
                                "be read, and why; the exit code is that of the matches");
  limit_ = addValue("--limit", "N", "at most N matches; with --sort the first N of all");
  color_ = addValue("--color", "WHEN",
                    "always, never or auto (default: on a terminal,\n"
                    "unless NO_COLOR is set)");
  extensions_->excludes(plain_);
  json_->excludes(long_);
  count_->excludes(json_)->excludes(long_);
  quiet_->excludes(json_)->excludes(long_)->excludes(count_);
  for (CLI::Option *const other : {json_, long_, count_, quiet_, unread_})
    format_->excludes(other);
  for (CLI::Option *const other : {json_, long_, sort_, count_, quiet_, limit_, plain_})
    unread_->excludes(other);
}

void OptionTable::addCommands() {
  app_.option_defaults()->group("Commands in place of output");
  exec_ = addFlag("-x,--exec", "run COMMAND for each match; it ends with the line or a\n"
                               "';'. In it {} is the path (added if it is nowhere),\n"
                               "{/} its name, {//} its folder, {.} the path without\n"
                               "the extension and {/.} the name without it")
              ->option_text("COMMAND");
  execBatch_ = addFlag("-X,--exec-batch", "run COMMAND once, with as many paths as fit")
                   ->option_text("COMMAND");
  jobs_ = addValue("-j,--jobs", "N",
                   "commands of --exec at a time (default: one on each\n"
                   "processor); with 1 they have the terminal, too");
  for (CLI::Option *const other : {count_, quiet_, unread_, json_, long_, format_, color_})
    exec_->excludes(other), execBatch_->excludes(other);
  exec_->excludes(execBatch_);
  jobs_->needs(exec_);
}

void OptionTable::addOthers() {
  app_.option_defaults()->group("Other options");
  indexStatus_ = addFlag("--index-status", "where the metadata index is, and what it holds");
  indexClear_ = addFlag("--index-clear", "remove the metadata index; searches make a new one");
  app_.set_help_flag("-h,--help", "show this help");
  app_.set_version_flag("--version", std::string("ssfind ") + PFGetVersion(), "show the version");
}

ParsedOptions OptionTable::parse() {
  try {
    app_.parse(argumentsForParser());
    if (const std::optional<IndexTask> task = indexTask())
      return *task;
    return options();
  } catch (const CLI::CallForVersion &version) {
    return Information{std::string(version.what()) + '\n'};
  } catch (const CLI::Success &) {
    return Information{app_.help()};
  } catch (const CLI::ArgumentMismatch &error) {
    return usageError(faultOfValue(error));
  } catch (const CLI::ParseError &error) {
    return usageError(faultOf(error));
  } catch (const UsageFault &fault) {
    return usageError(fault);
  } catch (UsageError &error) {
    return std::move(error);
  }
}

std::vector<std::string> OptionTable::argumentsForParser() {
  std::vector<std::string> arguments;
  bool areOptionsOver = false;
  bool isValue = false;
  bool isOfCommand = false;
  for (std::size_t i = 0; i < commandLine_.arguments().size(); ++i) {
    const std::string &argument = commandLine_.arguments()[i];
    if (isOfCommand) {
      placesOfCommand_.insert(i);
      isOfCommand = argument != ";";
      if (isOfCommand)
        command_.push_back(argument);
      continue;
    }
    areOptionsOver |= !isValue && argument == "--";
    const bool mayBeOption = !areOptionsOver && !isValue;
    if (mayBeOption)
      refuseWordOfOneDash(argument);
    const std::string option = argument.substr(0, argument.find('='));
    // The parser would take the next argument in place of the empty value.
    const bool hasEmptyValue =
        mayBeOption && argument.starts_with("--") && argument == option + '=' && takesValue(option);
    arguments.push_back(hasEmptyValue ? option : argument);
    if (hasEmptyValue)
      arguments.emplace_back();
    isValue = mayBeOption && isValueBehind(argument);
    isOfCommand = mayBeOption && isCommandBehind(argument);
  }
  std::reverse(arguments.begin(), arguments.end());
  return arguments;
}

bool OptionTable::isCommandBehind(const std::string &argument) const {
  if (argument == exec_->get_name() || argument == execBatch_->get_name())
    return true;
  const bool hasLetters = argument.size() > 1 && argument[0] == '-' && argument[1] != '-';
  if (!hasLetters || (argument.back() != 'x' && argument.back() != 'X'))
    return false;
  return std::none_of(argument.begin() + 1, argument.end(), [&](char letter) {
    return takesValue({'-', letter});
  });
}

/// As in -name, which would be -n with the text "ame".
void OptionTable::refuseWordOfOneDash(const std::string &argument) const {
  if (argument.size() < 4 || argument[0] != '-' || argument[1] == '-')
    return;
  const std::string word = argument.substr(1, argument.find('=') - 1);
  const std::string_view other = longOptionForWord(word);
  const std::string option = "--" + (other.empty() ? word : std::string(other));
  if (app_.get_option_no_throw(option) != nullptr)
    throw UsageFault{"the option is " + option + ", with two dashes",
                     commandLine_.placesOfUnknown(argument)};
}

bool OptionTable::takesValue(const std::string &option) const {
  const CLI::Option *const found = app_.get_option_no_throw(option);
  return found != nullptr && found->get_items_expected_min() > 0;
}

/// Whether the argument is an option whose value is the next one.
bool OptionTable::isValueBehind(const std::string &argument) const {
  if (argument.size() < 2 || argument[0] != '-' || argument[1] == '-')
    return argument.starts_with("--") && takesValue(argument);
  for (std::size_t i = 1; i < argument.size(); ++i) {
    const std::string letter{'-', argument[i]};
    if (app_.get_option_no_throw(letter) == nullptr || takesValue(letter))
      return takesValue(letter) && i + 1 == argument.size();
  }
  return false;
}

std::optional<IndexTask> OptionTable::indexTask() const {
  for (const CLI::Option *option : {indexStatus_, indexClear_}) {
    if (option->count() == 0)
      continue;
    if (commandLine_.arguments().size() != 1)
      throw UsageFault{option->get_name() + " stands alone", placesOf(option)};
    return option == indexStatus_ ? IndexTask::ShowStatus : IndexTask::Clear;
  }
  return std::nullopt;
}

Options OptionTable::options() const {
  for (const CLI::Option *option :
       {modified_, in_, taken_, size_, maxDepth_, filesFrom_, exec_, execBatch_})
    if (option->count() > 1)
      throw UsageFault{option->get_name() + " is given twice", placesOf(option)};
  Options options;
  readOperands(options);
  readConditions(options);
  readRestrictions(options);
  const auto hasStar = [](const std::string &text) { return text.find('*') != text.npos; };
  const auto haveStar = [&](const CLI::Option *option) {
    const std::vector<std::string> &texts = option->results();
    return std::any_of(texts.begin(), texts.end(), hasStar);
  };
  options.hint =
      hintForWildcards(haveStar(name_) && !isGiven(glob_) && !isGiven(regex_), haveStar(keyword_));
  readOutput(options.output);
  options.output.hasShootingDate =
      options.conditions.taken || options.output.order == Order::LatestShotFirst;
  options.searchesMounts = mounts_->count() != 0;
  options.isDeep = options.output.isDeep = plain_->count() == 0;
  options.extensions = extensions();
  if (nul_->count() != 0)
    options.listSeparator = options.output.separator = '\0';
  if (filesFrom_->count() != 0)
    options.list = filesFrom_->results().back();
  else if (options.folders.empty())
    options.folders.emplace_back(".");
  return options;
}

void OptionTable::readOperands(Options &options) const {
  bool areOptionsOver = false;
  for (const std::string &rest : app_.remaining()) {
    const bool looksLikeOption = rest.size() > 1 && rest.front() == '-';
    if (areOptionsOver || !looksLikeOption) {
      options.folders.push_back(rest);
    } else if (rest == "--") {
      areOptionsOver = true;
    } else {
      throw UsageFault{"there is no option " + visible(rest), commandLine_.placesOfUnknown(rest)};
    }
  }
}

void OptionTable::readConditions(Options &options) const {
  Conditions &conditions = options.conditions;
  conditions.isAnyEnough = isGiven(any_);
  conditions.isCaseSensitive = isGiven(caseSensitive_);
  conditions.searchesSubfolders = !isGiven(noSubfolders_);
  conditions.usesIndex = !isGiven(noIndex_);
  readNames(options);
  readKeywords(options);
  conditions.modified = dateRange(modified_);
  conditions.taken = dateRange(taken_);
}

void OptionTable::readNames(Options &options) const {
  Conditions &conditions = options.conditions;
  NameSyntax syntax = NameSyntax::Text;
  if (isGiven(glob_) || isGiven(regex_))
    syntax = isGiven(glob_) ? NameSyntax::Glob : NameSyntax::Regex;
  for (const std::string &text : name_->results()) {
    if (text.empty() && (conditions.isAnyEnough || syntax == NameSyntax::Glob))
      failValue(name_, text,
                conditions.isAnyEnough ? "--name: with --any an empty text would match nothing"
                                       : "--name: an empty pattern would match nothing");
    if (syntax == NameSyntax::Text && !conditions.name) {
      conditions.name = text;
      continue;
    }
    auto pattern = NamePattern::parse(text, syntax, conditions.isCaseSensitive);
    if (const auto *error = std::get_if<TextError>(&pattern))
      failText(name_, text, *error);
    options.furtherNames.push_back(std::get<NamePattern>(std::move(pattern)));
  }
}

void OptionTable::readKeywords(Options &options) const {
  Conditions &conditions = options.conditions;
  for (const std::string &text : keyword_->results()) {
    if (text.empty())
      failValue(keyword_, text, "--keyword: an empty text would match nothing");
    if (!conditions.keyword)
      conditions.keyword = text;
    else
      options.furtherKeywords.push_back(text);
  }
  if (in_->count() == 0)
    return;
  conditions.isKeywordInPDF = conditions.isKeywordInExif = false;
  std::istringstream kinds(in_->results().back() + ',');
  for (std::string kind; std::getline(kinds, kind, ',');) {
    if (kind != "pdf" && kind != "exif")
      failValue(in_, "--in is pdf, exif or pdf,exif");
    (kind == "pdf" ? conditions.isKeywordInPDF : conditions.isKeywordInExif) = true;
  }
}

std::optional<DateRange> OptionTable::dateRange(const CLI::Option *option) const {
  if (option->count() == 0)
    return std::nullopt;
  const std::string &text = option->results().back();
  const auto range = parseDateRange(text, std::time(nullptr));
  if (const auto *error = std::get_if<TextError>(&range))
    failText(option, text, *error);
  return std::get<DateRange>(range);
}

void OptionTable::readRestrictions(Options &options) const {
  Restrictions &restrictions = options.restrictions;
  options.searchesHidden = isGiven(hidden_) && !isGiven(noSubfolders_);
  for (const std::string &pattern : exclude_->results())
    if (const auto error = restrictions.excluded.add(pattern, isGiven(caseSensitive_)))
      failText(exclude_, pattern, *error);
  if (isGiven(size_)) {
    const std::string &text = size_->results().back();
    const auto range = parseSizeRange(text);
    if (const auto *error = std::get_if<TextError>(&range))
      failText(size_, text, *error);
    restrictions.size = std::get<SizeRange>(range);
  }
  if (!isGiven(maxDepth_))
    return;
  restrictions.depth = positiveNumber(maxDepth_);
  // The library itself can leave out all folders.
  if (restrictions.depth == 1) {
    restrictions.depth.reset();
    options.conditions.searchesSubfolders = options.searchesHidden = false;
  }
}

std::vector<std::string> OptionTable::extensions() const {
  std::vector<std::string> extensions = extensions_->results();
  for (std::string &extension : extensions) {
    if (extension.starts_with('.'))
      extension.erase(0, 1);
    if (extension.empty() || extension.find_first_of("./") != std::string::npos)
      failValue(extensions_, "--extension is the end of a name behind its last dot, as in jpg");
  }
  return extensions;
}

void OptionTable::readOutput(OutputOptions &output) const {
  if (json_->count() != 0)
    output.format = Format::Json;
  else if (long_->count() != 0)
    output.format = Format::Long;
  if (quiet_->count() != 0)
    output.report = Report::Nothing;
  else if (count_->count() != 0)
    output.report = Report::Count;
  else if (unread_->count() != 0)
    output.report = Report::Unread;
  if (sort_->count() != 0)
    output.order = choice<Order>(sort_, {{"path", Order::ByPath},
                                         {"name", Order::ByName},
                                         {"size", Order::LargestFirst},
                                         {"modified", Order::NewestFirst},
                                         {"taken", Order::LatestShotFirst}});
  output.isReversed = isGiven(reverse_);
  if (isGiven(format_)) {
    const std::string &text = format_->results().back();
    auto format = FormatTemplate::parse(text);
    if (const auto *error = std::get_if<TextError>(&format))
      failText(format_, text, *error);
    output.formatTemplate = std::get<FormatTemplate>(std::move(format));
  }
  if (color_->count() != 0)
    output.coloring = choice<Coloring>(
        color_,
        {{"auto", Coloring::Auto}, {"always", Coloring::Always}, {"never", Coloring::Never}});
  if (limit_->count() != 0)
    output.limit = positiveNumber(limit_);
  if (isGiven(exec_) || isGiven(execBatch_)) {
    const CLI::Option *const option = isGiven(exec_) ? exec_ : execBatch_;
    auto command = CommandTemplate::parse(command_, option == execBatch_);
    if (const auto *message = std::get_if<std::string>(&command))
      throw UsageFault{option->get_name() + ' ' + *message, placesOf(option)};
    output.command = std::get<CommandTemplate>(std::move(command));
  }
  if (isGiven(jobs_))
    output.jobs = positiveNumber(jobs_);
}

template <class Value>
Value OptionTable::choice(const CLI::Option *option,
                          const std::map<std::string_view, Value> &choices) const {
  const auto chosen = choices.find(option->results().back());
  if (chosen != choices.end())
    return chosen->second;
  std::string names;
  for (const auto &[name, value] : choices)
    names.append(names.empty() ? "" : ", ").append(name);
  failValue(option, option->get_name() + " is one of " + names);
}

std::uint64_t OptionTable::positiveNumber(const CLI::Option *option) const {
  const std::string &text = option->results().back();
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number == 0)
    failValue(option, option->get_name() + " is a whole number from 1");
  return number;
}

void OptionTable::failText(const CLI::Option *option, const std::string &text,
                           const TextError &error) const {
  throw UsageError{programMessage(option->get_name() + ": " + error.message) + '\n' +
                   MarkedText::withMarkAt(text, error.column).text() + tryHelp};
}

void OptionTable::failValue(const CLI::Option *option, const std::string &message) const {
  failValue(option, option->results().back(), message);
}

void OptionTable::failValue(const CLI::Option *option, const std::string &value,
                            const std::string &message) const {
  std::vector<std::size_t> places = placesOf(option);
  const std::vector<std::string> &arguments = commandLine_.arguments();
  const auto isApart = [&](std::size_t place) {
    return place + 1 < arguments.size() && arguments[place + 1] == value;
  };
  const auto found = std::find_if(places.begin(), places.end(), isApart);
  if (found != places.end())
    places = {*found + 1};
  else if (!places.empty())
    places = {places.back()};
  throw UsageFault{message, places};
}

std::vector<std::size_t> OptionTable::placesOf(const CLI::Option *option) const {
  const std::vector<std::string> &letters = option->get_snames();
  std::vector<std::size_t> places = commandLine_.placesOf(
      option->get_lnames().front(), letters.empty() ? '\0' : letters.front().front());
  std::erase_if(places, [&](std::size_t place) { return placesOfCommand_.contains(place); });
  return places;
}

UsageFault OptionTable::faultOf(const CLI::ParseError &error) const {
  UsageFault fault{error.what(), {}};
  for (const std::string &word : CLI::detail::split_up(fault.message))
    if (const CLI::Option *option = app_.get_option_no_throw(word))
      for (const std::size_t place : placesOf(option))
        fault.places.push_back(place);
  return fault;
}

UsageFault OptionTable::faultOfValue(const CLI::ArgumentMismatch &error) const {
  // The message begins with the option: "--name: ..." if its value is missing, "json ..." if a flag
  // has one.
  const std::string message = error.what();
  const std::string name = message.substr(0, message.find_first_of(": "));
  const bool isFlag = !name.starts_with('-');
  const std::string fullName = isFlag ? "--" + name : name;
  const CLI::Option *option = app_.get_option_no_throw(fullName);
  return {fullName + (isFlag ? " takes no value" : " needs a value"),
          option != nullptr ? placesOf(option) : std::vector<std::size_t>()};
}

UsageError OptionTable::usageError(const UsageFault &fault) const {
  return {programMessage(fault.message) + '\n' + commandLine_.marked(fault.places) + tryHelp};
}

} // namespace

ParsedOptions parseOptions(int argc, const char *const *argv) {
  return OptionTable(CommandLine(argc, argv)).parse();
}

} // namespace searchsystem::ssfind
