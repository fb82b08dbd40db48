// What the user does with the selected rows of the list of downloads.
#pragma once

class QString;
class TransferList;

// Ends and removes them, without a question.
void RemoveSelectedDownloads(const TransferList& i_list);
// Removes and adds again. What is under way or complete only if it is selected itself, not by way of its folder or
// user.
void RetrySelectedDownloads(const TransferList& i_list);
// The finished ones among the selected files, the folders of all that is selected; a handful of each at most. Answer a
// sentence for the user where there is nothing to open.
QString OpenSelectedFiles(const TransferList& i_list);
QString OpenSelectedFolders(const TransferList& i_list);

// Puts names of files and users and paths of folders on the clipboard, one a line; of either list.
void CopySelectedNames(const TransferList& i_list);
