// The files the benchmarks read: written into one temporary directory that
// is removed when the program ends.
#pragma once

#include <string>

// The path of `name` in the benchmarks' temporary directory (created on
// first use).
std::string benchFile(const std::string &name);

// Writes `content` to `path`; throws std::runtime_error when it cannot.
void writeBenchFile(const std::string &path, const std::string &content);

// One EVENEMENT of a scenario file: the request pattern and its responses.
std::string scenarioEvent(const std::string &request, const std::string &response);

// A scenario file's text around its EVENEMENT elements.
std::string scenarioDocument(const std::string &events);
