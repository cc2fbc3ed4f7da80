@echo off
rem Adds the driver package beside this file to the driver store and installs it on the cameras that are plugged in.
rem
rem   install.cmd               install
rem   install.cmd /uninstall    remove every version of the package
rem
rem Exit code 0: done, 1: failed, 2: wrong command line.
setlocal enableextensions
set package=%~dp0tarn.inf

fltmc >nul 2>&1
if errorlevel 1 (
  echo install: run this from an elevated prompt.
  exit /b 1
)
if "%~1"=="" goto install
if /i "%~1"=="/uninstall" goto uninstall
echo usage: install.cmd [/uninstall]
exit /b 2

:install
if not exist "%package%" (
  echo install: %package% is missing.
  exit /b 1
)
pnputil /add-driver "%package%" /install
set result=%errorlevel%
if %result%==3010 goto restart
if %result%==259 (
  echo install: the package is in the driver store, but no camera that is plugged in takes it: another hardware id, or a
  echo install: version as high is there already. See troubleshooting.md.
  exit /b 1
)
if not %result%==0 (
  echo install: pnputil failed with %result%. The reason is at the end of %windir%\INF\setupapi.dev.log.
  exit /b 1
)
call :stop_services
echo install: done. Open the Camera app, then run check-install.ps1.
exit /b 0

:uninstall
rem Windows keeps a copy of every package's INF under its own name; only ours has this catalog and this file.
set removed=0
for /f "delims=" %%f in ('findstr /m /i /c:"tarn_dmft.dll" "%windir%\INF\oem*.inf" 2^>nul') do (
  pnputil /delete-driver "%%~nxf" /uninstall || exit /b 1
  set removed=1
)
call :stop_services
if %removed%==0 echo install: no package with tarn_dmft.dll was there.
exit /b 0

:restart
echo install: restart Windows to finish.
exit /b 0

rem The camera service holds the old module until it ends; the next camera application starts it again.
:stop_services
net stop FrameServerMonitor >nul 2>&1
net stop FrameServer >nul 2>&1
exit /b 0
