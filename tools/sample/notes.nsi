; For one user, with Cyrillic names. No InstallLocation: where it lies is known from the icon alone.
!include "common.nsh"
Name "Пустельгин Блокнот"
OutFile "notes-setup.exe"
InstallDir "$LOCALAPPDATA\Programs\Пустельгин Блокнот"
RequestExecutionLevel user
!define KEY "${UNINSTALL}\PustelginNotes"

Section
  SetOutPath "$INSTDIR"
  File "/oname=блокнот.exe" "notes.exe"
  File "/oname=образец.txt" "notes.txt"
  WriteUninstaller "$INSTDIR\удалить.exe"
  CreateShortCut "$SMPROGRAMS\Пустельгин Блокнот.lnk" "$INSTDIR\блокнот.exe"
  WriteRegStr HKCU "Software\Пустельгин\Блокнот" "Папка" "$INSTDIR"
  WriteRegExpandStr HKCU "Software\Пустельгин\Блокнот" "Запас" "%APPDATA%\Пустельгин"
  WriteRegStr HKCU "Software\Classes\.блок" "" "Pustelgin.Notes"
  WriteRegStr HKCU "Software\Classes\Pustelgin.Notes\shell\open\command" "" '"$INSTDIR\блокнот.exe" "%1"'
  WriteRegStr HKCU "${KEY}" "DisplayName" "Пустельгин Блокнот"
  WriteRegStr HKCU "${KEY}" "DisplayVersion" "0.9.7"
  WriteRegStr HKCU "${KEY}" "Publisher" "Мастерская Пустельгина"
  WriteRegStr HKCU "${KEY}" "DisplayIcon" '"$INSTDIR\блокнот.exe",0'
  WriteRegStr HKCU "${KEY}" "UninstallString" '"$INSTDIR\удалить.exe" /currentuser'
  WriteRegStr HKCU "${KEY}" "HelpLink" "https://pustelgin.example/"
  !insertmacro WriteInstallDate HKCU "${KEY}"
  !insertmacro WriteEstimatedSize HKCU "${KEY}"
SectionEnd

Section "Uninstall"
  RMDir /r "$INSTDIR"
  DeleteRegKey HKCU "${KEY}"
SectionEnd
