; What all the NSIS installers of the sample share. Each is silent, writes no console and takes its files from the
; current folder.
Unicode true
SetCompressor zlib
SetDatablockOptimize on
CRCCheck force
SilentInstall silent
SilentUnInstall silent
ShowInstDetails nevershow
!include "FileFunc.nsh"

; The date of today as Windows keeps it, yyyymmdd.
!macro WriteInstallDate ROOT KEY
  ${GetTime} "" "L" $0 $1 $2 $3 $4 $5 $6
  WriteRegStr ${ROOT} "${KEY}" "InstallDate" "$2$1$0"
!macroend

; The size of the installed folder in kilobytes.
!macro WriteEstimatedSize ROOT KEY
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  IntFmt $0 "0x%08X" $0
  WriteRegDWORD ${ROOT} "${KEY}" "EstimatedSize" "$0"
!macroend

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall"
