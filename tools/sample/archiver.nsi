; 32-bit, for the machine. The key is no GUID; the uninstall command is quoted and has switches.
!include "common.nsh"
Name "Fennmark Archiver"
OutFile "archiver-setup.exe"
InstallDir "$PROGRAMFILES32\Fennmark Archiver"
RequestExecutionLevel admin
!define KEY "${UNINSTALL}\Fennmark Archiver"

Section
  SetShellVarContext all
  SetOutPath "$INSTDIR"
  File "fennarc.exe"
  File "fennpack.dll"
  File "/oname=Read me.txt" "archiver.txt"
  SetOutPath "$INSTDIR\formats"
  File "bundle.fmt"
  SetOutPath "$INSTDIR"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateDirectory "$SMPROGRAMS\Fennmark"
  CreateShortCut "$SMPROGRAMS\Fennmark\Fennmark Archiver.lnk" "$INSTDIR\fennarc.exe" "/gui" "$INSTDIR\fennarc.exe" 0
  CreateShortCut "$DESKTOP\Fennmark Archiver.lnk" "$INSTDIR\fennarc.exe"
  WriteRegStr HKLM "Software\Microsoft\Windows\CurrentVersion\App Paths\fennarc.exe" "" "$INSTDIR\fennarc.exe"
  WriteRegStr HKLM "Software\Fennmark\Archiver" "InstallPath" "$INSTDIR"
  WriteRegDWORD HKLM "Software\Fennmark\Archiver" "Level" 6
  WriteRegBin HKLM "Software\Fennmark\Archiver" "Window" "10002000f003"
  WriteRegMultiStr /REGEDIT5 HKLM "Software\Fennmark\Archiver" "Formats" \
    62,00,75,00,6e,00,64,00,6c,00,65,00,00,00,72,00,6f,00,6c,00,6c,00,00,00,00,00
  WriteRegStr HKLM "Software\Classes\.fenn" "" "Fennmark.Bundle"
  WriteRegStr HKLM "Software\Classes\Fennmark.Bundle\DefaultIcon" "" "$INSTDIR\fennarc.exe,-1"
  WriteRegStr HKLM "${KEY}" "DisplayName" "Fennmark Archiver 4.2"
  WriteRegStr HKLM "${KEY}" "DisplayVersion" "4.2.0.118"
  WriteRegStr HKLM "${KEY}" "Publisher" "Fennmark Tools"
  WriteRegStr HKLM "${KEY}" "DisplayIcon" "$INSTDIR\fennarc.exe,0"
  WriteRegStr HKLM "${KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${KEY}" "UninstallString" '"$INSTDIR\uninstall.exe" /allusers /keep=settings'
  WriteRegStr HKLM "${KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /allusers /S'
  WriteRegStr HKLM "${KEY}" "URLInfoAbout" "https://fennmark.example/"
  WriteRegDWORD HKLM "${KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${KEY}" "NoRepair" 1
  WriteRegDWORD HKLM "${KEY}" "VersionMajor" 4
  WriteRegDWORD HKLM "${KEY}" "VersionMinor" 2
  !insertmacro WriteInstallDate HKLM "${KEY}"
  !insertmacro WriteEstimatedSize HKLM "${KEY}"
SectionEnd

Section "Uninstall"
  RMDir /r "$INSTDIR"
  DeleteRegKey HKLM "${KEY}"
SectionEnd
