// SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
#include "tools/report/page.h"

#include <nlohmann/json.hpp>

#include "tools/report/page_text.h"

namespace tool {
namespace {

using Json = nlohmann::ordered_json;

const char *NameOf(ReportVerdict verdict) {
  constexpr const char *kNames[] = {"held", "nothing-compared", "failed", "not-played"};
  return kNames[static_cast<int>(verdict)];
}

// The names of the kinds, in their order.
constexpr const char *kKindNames[] = {"RESET",     "IR",   "DR",      "SIR",  "SDR",
                                      "RUNTEST",   "HIR",  "HDR",     "TIR",  "TDR",
                                      "FREQUENCY", "LOOP", "ENDLOOP", "OTHER"};

// ASCII, and without "<", so that no text can end the script element that holds it.
std::string ScriptText(const Json &json) {
  const std::string text = json.dump(-1, ' ', true, Json::error_handler_t::replace);
  std::string safe;
  safe.reserve(text.size());
  for (const char c : text) {
    if (c == '<') {
      safe += "\\u003c";
    } else {
      safe += c;
    }
  }
  return safe;
}

Json FigureTable(const std::vector<ReportFigure> &figures) {
  Json table = Json::array();
  for (const ReportFigure &figure : figures) {
    table.push_back({{"label", figure.label},
                     {"number", figure.number},
                     {"text", figure.text},
                     {"detail", figure.detail}});
  }
  return table;
}

// Columns rather than rows: they are smaller, and quicker to read.
Json Columns(const std::vector<ReportRecord> &records) {
  Json columns = Json::object();
  const auto add = [&](const char *name, auto value) {
    Json &column = columns[name] = Json::array();
    for (const ReportRecord &record : records) {
      column.push_back(value(record));
    }
  };
  add("kind", [](const ReportRecord &r) { return static_cast<int>(r.kind); });
  add("record", [](const ReportRecord &r) { return r.record; });
  add("offset", [](const ReportRecord &r) { return r.offset; });
  add("size", [](const ReportRecord &r) { return r.size; });
  add("value", [](const ReportRecord &r) { return r.value; });
  add("compared", [](const ReportRecord &r) { return r.compared; });
  add("scan", [](const ReportRecord &r) { return r.scan; });
  add("loop", [](const ReportRecord &r) { return r.loop; });
  add("line", [](const ReportRecord &r) { return r.line; });
  add("clocks", [](const ReportRecord &r) { return r.clocks; });
  add("begin", [](const ReportRecord &r) { return r.begin ? Json(*r.begin) : Json(-1); });
  add("time", [](const ReportRecord &r) { return r.time; });
  add("wait", [](const ReportRecord &r) { return r.wait; });
  add("passes", [](const ReportRecord &r) { return r.passes; });
  add("tdi", [](const ReportRecord &r) { return r.tdi; });
  add("tdo", [](const ReportRecord &r) { return r.tdo; });
  add("mask", [](const ReportRecord &r) { return r.mask; });
  return columns;
}

Json WaveObject(const ReportWave &wave) {
  Json levels = Json::array();
  for (const bool level : wave.levels) {
    levels.push_back(level ? 1 : 0);
  }
  Json changes = Json::array();
  for (const ReportChange &change : wave.changes) {
    Json entry = {change.time, change.line, change.level ? 1 : 0};
    if (!change.state.empty()) {
      entry.push_back(change.state);
    }
    changes.push_back(std::move(entry));
  }
  return {{"begin", wave.begin},
          {"end", wave.end},
          {"levels", std::move(levels)},
          {"state", wave.state},
          {"changes", std::move(changes)}};
}

Json BitRows(const std::vector<ReportBits> &rows) {
  Json array = Json::array();
  for (const ReportBits &row : rows) {
    array.push_back({{"first", row.first},
                     {"count", row.count},
                     {"expected", row.expected},
                     {"read", row.read},
                     {"mask", row.mask}});
  }
  return array;
}

Json SourceObject(const std::optional<ReportSource> &source) {
  return source ? Json{{"file", source->file},
                       {"line", source->line},
                       {"column", source->column},
                       {"text", source->text}}
                : Json();
}

Json FailureObject(const std::optional<ReportFailure> &failure) {
  if (!failure) {
    return Json();
  }
  return {{"place", failure->place},
          {"sentence", failure->sentence},
          {"detail", failure->detail},
          {"record", failure->record},
          {"scan", failure->scan},
          {"bit", failure->bit},
          {"bits", failure->bits},
          {"header", failure->header},
          {"loop", failure->loop},
          {"pass", failure->pass},
          {"begin", failure->begin},
          {"end", failure->end},
          {"compared", failure->compared},
          {"differ", failure->differ},
          {"rows", BitRows(failure->rows)},
          {"wave", WaveObject(failure->wave)},
          {"source", SourceObject(failure->source)}};
}

Json SpentObject(const ReportSpent &spent) {
  return {{"ir", spent.ir},
          {"dr", spent.dr},
          {"clocked", spent.clocked},
          {"waited", spent.waited},
          {"own", spent.own}};
}

Json FileObject(const ReportFile &file) {
  return {{"name", file.name},
          {"size", file.size},
          {"seal", file.seal},
          {"verdict", NameOf(file.verdict)},
          {"words", file.words},
          {"summary", file.summary},
          {"begin", file.begin},
          {"end", file.end},
          {"unlisted", file.unlisted},
          {"spent", SpentObject(file.spent)},
          {"figures", FigureTable(file.figures)},
          {"failure", FailureObject(file.failure)},
          {"records", Columns(file.records)}};
}

Json Messages(const std::vector<ReportMessage> &messages) {
  Json array = Json::array();
  for (const ReportMessage &message : messages) {
    array.push_back({{"kind", message.kind}, {"place", message.place}, {"text", message.text}});
  }
  return array;
}

Json Log(const std::vector<ReportLogLine> &log) {
  Json array = Json::array();
  for (const ReportLogLine &line : log) {
    array.push_back({{"time", line.time}, {"text", line.text}});
  }
  return array;
}

Json HeadObject(const ReportData &data) {
  return {{"title", data.title},
          {"target", data.target},
          {"clocking", data.clocking},
          {"verdict", NameOf(data.verdict)},
          {"words", data.words},
          {"figures", FigureTable(data.figures)},
          {"messages", Messages(data.messages)},
          {"log", Log(data.log)},
          {"kinds", Json(kKindNames)},
          {"maxDigits", kMaxReportDigits},
          {"maxRecords", kMaxReportRecords},
          {"texts", data.texts.all()}};
}

// The text for a reader without scripts.
std::string PlainText(const ReportData &data) {
  std::string text = data.title + ": " + data.words + "\n";
  for (const ReportFile &file : data.files) {
    text += file.name + ": " + (file.summary.empty() ? file.words : file.summary) + "\n";
  }
  for (const ReportMessage &message : data.messages) {
    text += message.place + ": " + message.kind + ": " + message.text + "\n";
  }
  for (const ReportFile &file : data.files) {
    text += file.failure ? file.failure->detail + "\n" : "";
  }
  return text;
}

std::string HtmlText(const std::string &text) {
  std::string safe;
  for (const char c : text) {
    if (c == '<') {
      safe += "&lt;";
    } else if (c == '&') {
      safe += "&amp;";
    } else {
      safe += c;
    }
  }
  return safe;
}

}  // namespace

void WritePage(const ReportData &data, const PageSink &sink) {
  sink(kPageHead);
  sink(HtmlText(PlainText(data)));
  sink(kPageMiddle);
  sink(ScriptText(HeadObject(data)));
  for (const ReportFile &file : data.files) {
    sink("</script>\n<script type=\"application/json\" class=\"file\">");
    sink(ScriptText(FileObject(file)));
  }
  sink(kPageTail);
}

}  // namespace tool
