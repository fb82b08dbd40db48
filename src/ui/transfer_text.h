// How figures of transfers and lists of files read.
#pragma once

#include <QString>

// "   1h:2m:5s": hours and minutes only where they say something.
QString TimeLeftText(long long i_seconds);
// Seconds until the bytes are through; 0 at a rate of 0.
long long SecondsLeft(long long i_bytes, int i_bytesPerSecond);

// In hundredths of the whole, from 0 to 100; a whole of nothing is done.
double Percentage(long long i_position, long long i_whole);
// "1,234,567 (45.6%)"
QString ProgressText(long long i_position, double i_percentage);

QString RateText(int i_bytesPerSecond); // KiB per second, one decimal

// "1,204 files, 3,120,555 bytes"
QString FileCountText(long long i_files);
QString FilesAndBytesText(long long i_files, long long i_bytes);
