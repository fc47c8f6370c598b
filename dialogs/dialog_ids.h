#pragma once

namespace dialogs {

/// Control ids, by window. Buttons that Enter and Esc press are IDOK (1) and
/// IDCANCEL (2) whatever their inherited names.

enum ReloadFormId : int {
  kIdReloadLabel1 = 1001,  ///< caption
  kIdReloadStatus,
  kIdReloadCount,     ///< "4 / 19"
  kIdReloadProgress,  ///< a bar of so many genres
  kIdReloadAbort,
};

enum SearchFormId : int {
  kIdSearchLabel2 = 1001,  ///< heading
  kIdSearchText1,          ///< the words
};

enum EditFavsId : int {
  kIdListView1 = 1001,
  kIdCommand1,  ///< "Remove"
};

enum EntryFormId : int {
  kIdLabel1 = 1001,  ///< of the title
  kIdText1,
  kIdLabel2,  ///< of the address
  kIdText2,
};

}  // namespace dialogs
