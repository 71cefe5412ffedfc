// Preloaded into peers that serve HTTP: they listen on loopback only, at a free port, which they print.
const net = require('node:net');
const listen = net.Server.prototype.listen;
net.Server.prototype.listen = function (...given) {
  const callback = given.find((argument) => typeof argument === 'function');
  this.once('listening', () => process.stdout.write(`port ${this.address().port}\n`));
  return listen.call(this, { port: 0, host: '127.0.0.1' }, callback);
};
