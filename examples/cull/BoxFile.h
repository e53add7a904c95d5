// examples/cull/BoxFile.h - reading boxes from a text file
#ifndef KDRCORE_EXAMPLES_CULL_BOXFILE_H
#define KDRCORE_EXAMPLES_CULL_BOXFILE_H

#include "kdrcore/geometry/BoundingBox.h"

#include <string>
#include <vector>

/// Reads the boxes of the text file `path`: one box per line, six numbers separated by blanks,
/// "minX minY minZ maxX maxY maxZ". '#' starts a comment that runs to the end of the line, and
/// blank lines are skipped. Each number must be finite and fit a float, and each min must not
/// exceed its max. On success returns true and appends the boxes to `boxes`; on failure returns
/// false, leaves `boxes` as it was and puts one line into `error` that names the file and, where
/// there is one, the line: "scene.txt:3: expected 6 numbers, found 5".
bool readBoxFile(std::vector<BoundingBox> & boxes, std::string & error, std::string const & path);

/// As readBoxFile, on text already in memory; `name` stands for the file in messages.
bool parseBoxText(std::vector<BoundingBox> & boxes, std::string & error, std::string const & text,
                  std::string const & name);

#endif // KDRCORE_EXAMPLES_CULL_BOXFILE_H
