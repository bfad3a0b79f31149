; A 64-bit and a 32-bit half in one installer: an entry with the same key and name in both registry views, each with
; its own folder and version. The uninstall commands name the short form of their path.
!include "common.nsh"
Name "Osmundgate Link"
OutFile "gateway-setup.exe"
InstallDir "$PROGRAMFILES64\Osmundgate Link"
RequestExecutionLevel admin
!define KEY "${UNINSTALL}\Osmundgate Link"

!macro WriteHalf VIEW VERSION
  SetRegView ${VIEW}
  WriteRegStr HKLM "Software\Osmundgate\Link" "Folder" "$INSTDIR"
  WriteRegStr HKLM "${KEY}" "DisplayName" "Osmundgate Link"
  WriteRegStr HKLM "${KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${KEY}" "Publisher" "Osmundgate Networks"
  WriteRegStr HKLM "${KEY}" "DisplayIcon" "$INSTDIR\link.exe,-1"
  WriteRegStr HKLM "${KEY}" "InstallLocation" "$INSTDIR\"
  GetFullPathName /SHORT $3 "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${KEY}" "UninstallString" "$3"
  !insertmacro WriteInstallDate HKLM "${KEY}"
  !insertmacro WriteEstimatedSize HKLM "${KEY}"
!macroend

Section
  SetOutPath "$INSTDIR"
  File "/oname=link.exe" "link64.exe"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  !insertmacro WriteHalf 64 "5.1.64"

  StrCpy $INSTDIR "$PROGRAMFILES32\Osmundgate Link"
  SetOutPath "$INSTDIR"
  File "/oname=link.exe" "link32.exe"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  !insertmacro WriteHalf 32 "5.1.32"
SectionEnd

Section "Uninstall"
  RMDir /r "$INSTDIR"
SectionEnd
