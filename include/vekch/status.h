// SPDX-License-Identifier: MIT
/**
 * @file
 * The status that every function but vekchGetLibVersion returns, and its text for people.
 *
 * 0 is success. Negative values are errors: the call did not do its work. Positive values are
 * warnings: the call did its work, its outputs are valid, but something was cut short.
 */
#ifndef VEKCH_STATUS_H
#define VEKCH_STATUS_H

#include <stdint.h>

typedef int32_t vekStatus;

enum {
  /* Warnings. */
  StatusDestinationTruncated = 27,   /**< split: a piece was cut to its destination's capacity */
  StatusDestinationsExhausted = 26,  /**< split: source bytes remained when all slots were used */
  StatusRegExpResultsTruncated = 12, /**< a match has more groups than the result array has slots */

  StatusNoError = 0,

  /* Errors of any function. */
  StatusSizeError = -6,    /**< a count or a capacity is below 1 */
  StatusRangeError = -7,   /**< an option value is outside its set */
  StatusNullPointer = -8,  /**< a required pointer is null */
  StatusLengthError = -15, /**< a length is negative, or a position lies outside the string */

  /* Errors of the regular expressions. */
  StatusRegExpEscapeError = -183,     /**< malformed escape */
  StatusRegExpClassError = -184,      /**< malformed bracket class */
  StatusRegExpFormatError = -185,     /**< reference to a group that does not exist */
  StatusRegExpSyntaxError = -186,     /**< malformed pattern structure */
  StatusRegExpQuantifierError = -187, /**< malformed quantifier */
  StatusRegExpMatchLimit = -188,      /**< the match limit ran out */
  StatusRegExpError = -189,           /**< not a compiled pattern object */
  StatusRegExpOptionError = -190      /**< unknown letter in the options */
};

/**
 * A short English text for a status, without a full stop. Never null: a value that no function
 * returns gives "unknown status". The text is constant and lives as long as the program.
 *
 *     fprintf(stderr, "%s\n", vekStatusText(status));
 */
static inline const char* vekStatusText(vekStatus status) {
  switch (status) {
    case StatusDestinationTruncated:
      return "a piece was cut to its destination's capacity";
    case StatusDestinationsExhausted:
      return "source bytes remained when every destination was used";
    case StatusRegExpResultsTruncated:
      return "the match has more groups than the result array has elements";
    case StatusNoError:
      return "success";
    case StatusSizeError:
      return "a count or a capacity is below 1";
    case StatusRangeError:
      return "an option value is outside its allowed set";
    case StatusNullPointer:
      return "a required pointer is null";
    case StatusLengthError:
      return "a length is negative or a position lies outside the string";
    case StatusRegExpEscapeError:
      return "malformed escape in the pattern";
    case StatusRegExpClassError:
      return "malformed bracket class in the pattern";
    case StatusRegExpFormatError:
      return "reference to a group that does not exist";
    case StatusRegExpSyntaxError:
      return "malformed pattern structure";
    case StatusRegExpQuantifierError:
      return "malformed quantifier in the pattern";
    case StatusRegExpMatchLimit:
      return "the match limit ran out";
    case StatusRegExpError:
      return "not a compiled pattern object";
    case StatusRegExpOptionError:
      return "unknown letter in the pattern options";
    default:
      return "unknown status";
  }
}

#endif
